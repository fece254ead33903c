// ztclient upload: a file to the server's upload script.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <random>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/client/ztSoapUtils.h"
#include "ztclient/Commands.h"
#include "ztclient/ProgressBar.h"

namespace {

struct Options {
  std::string file;
  std::string url;
  std::string session;
  std::optional<std::string> name;
  std::optional<std::string> job;
  bool afterContinue = false;
};

// Standard input as a file, gone with the object: a request that is sent again reads it again.
class SpooledInput {
 public:
  SpooledInput()
      : path_(std::filesystem::temp_directory_path() /
              ("ztclient-" + std::to_string(std::random_device()()))) {
    std::ofstream out(path_, std::ios::binary);
    if (std::cin.peek() != std::char_traits<char>::eof()) out << std::cin.rdbuf();
    if (!out.flush()) throw tovin::Exception(L"Unable to keep standard input in %hs", path_.string());
  }
  SpooledInput(const SpooledInput&) = delete;
  SpooledInput& operator=(const SpooledInput&) = delete;
  ~SpooledInput() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  std::string path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

std::string leafOf(const std::string& file) {
  return std::filesystem::path(std::u8string(file.begin(), file.end())).filename().string();
}

void run(const Options& options) {
  std::optional<SpooledInput> input;
  if (options.file == "-") input.emplace();
  const std::wstring path = tovin::utf8ToWide(input ? input->path() : options.file);
  const std::wstring name = tovin::utf8ToWide(options.name.value_or(leafOf(options.file)));
  const std::wstring job = tovin::utf8ToWide(options.job.value_or(""));
  ProgressBar bar;
  ztSoapUtils::UploadViaCGI(path.c_str(), name.c_str(), options.job ? job.c_str() : nullptr,
                            tovin::utf8ToWide(options.session).c_str(), !options.afterContinue,
                            tovin::utf8ToWide(options.url).c_str(),
                            [&](uint64_t done, uint64_t length) { bar.show(done, length); });
}

}  // namespace

void commands::addUpload(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* upload = app.add_subcommand("upload", "Send a file to the server");
  upload->add_option("FILE", options->file, "The file; - for standard input")->required();
  upload->add_option("--url", options->url, "The server's upload script; HTTP or HTTPS")->required();
  upload->add_option("--session", options->session, "The session that uploads")->required();
  upload->add_option("--name", options->name, "The file's name on the server; its own unless said");
  upload->add_option("--job", options->job, "The job it belongs to");
  upload->add_flag("--expect-continue", options->afterContinue, "Ask the server before the file is sent");
  upload->footer("Example: ztclient upload a.sdf --url https://atlas:9943/perlbin/upload.pl --session 12ab");
  upload->callback([options, &status] {
    run(*options);
    status = done;
  });
}
