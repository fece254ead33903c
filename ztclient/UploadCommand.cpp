// ztclient upload: a file to the server's upload script.
#include <memory>
#include <optional>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Paths.h"
#include "ztbaseclient/client/ztSoapUtils.h"
#include "ztclient/Commands.h"
#include "ztclient/input/InputFile.h"
#include "ztclient/terminal/ProgressBar.h"

namespace {

struct Options {
  std::string file;
  std::string url;
  std::string session;
  std::optional<std::string> name;
  std::optional<std::string> job;
  bool afterContinue = false;
};

void run(const Options& options) {
  const InputFile file(options.file);  // a request that is sent again reads it again
  const std::wstring name =
      tovin::utf8ToWide(options.name.value_or(tovin::platform::pathOf(options.file).filename().string()));
  const std::wstring job = tovin::utf8ToWide(options.job.value_or(""));
  ProgressBar bar;
  ztSoapUtils::UploadViaCGI(file.name(), name.c_str(), options.job ? job.c_str() : nullptr,
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
