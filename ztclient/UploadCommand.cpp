// ztclient upload: a file to the server's upload script.
#include <memory>
#include <optional>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Paths.h"
#include "ztbaseclient/client/ztSoapUtils.h"
#include "ztclient/Commands.h"
#include "ztclient/arguments/Address.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/InputFile.h"
#include "ztclient/input/SessionId.h"
#include "ztclient/terminal/ProgressBar.h"

namespace {

struct Options {
  std::string file;
  std::string url;
  std::string session;
  std::string sessionFile;
  std::optional<std::string> name;
  std::optional<std::string> job;
  bool afterContinue = false;
};

std::string sessionOf(const Options& options) {
  if (!options.session.empty()) return options.session;
  if (!options.sessionFile.empty()) return sessionId::fromFile(options.sessionFile);
  const std::string id = sessionId::fromEnvironment();
  if (id.empty()) throw CLI::RequiredError("--session-file, or ZTCLIENT_SESSION,");
  return id;
}

std::string nameOf(const Options& options) {
  if (options.name) return *options.name;
  if (options.file == "-") throw CLI::RequiredError("With standard input, --name");
  const std::u8string leaf = tovin::platform::pathOf(options.file).filename().u8string();
  const std::string name(leaf.begin(), leaf.end());
  bool cutShort = false;
  if (!tovin::isValidUtf8(name, cutShort))
    throw CLI::RequiredError("For a file whose name is not UTF-8, --name");
  return name;
}

// CLI11's way to refuse: a text, empty for none.
std::string checkUrl(const std::string& url) {
  return address::isWebAddress(url) ? "" : "takes a URL of http or https, not \"" + url + '"';
}

void run(const Options& options) {
  if (options.file == "-" && options.sessionFile == "-")
    throw CLI::ValidationError("the file and the session id cannot both be standard input");
  const std::wstring name = tovin::utf8ToWide(nameOf(options));
  const std::wstring session = tovin::utf8ToWide(sessionOf(options));
  const std::wstring job = tovin::utf8ToWide(options.job.value_or(""));
  const InputFile file(options.file);  // a request that is sent again reads it again
  const std::wstring given = tovin::platform::fileName(options.file);
  ProgressBar bar;
  ztSoapUtils::UploadViaCGI(
      file.name(), name.c_str(), options.job ? job.c_str() : nullptr, session.c_str(), !options.afterContinue,
      tovin::utf8ToWide(options.url).c_str(), [&](uint64_t done, uint64_t length) { bar.show(done, length); },
      given == file.name() ? given.c_str() : name.c_str());
}

}  // namespace

void commands::addUpload(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* upload = app.add_subcommand("upload", "Send a file to the server");
  arguments::addFile(*upload, "FILE", options->file, "The file; - for standard input")->required();
  arguments::requirePrintable(
      upload->add_option("--url", options->url, "The server's upload script; HTTP or HTTPS")->required())
      ->check(checkUrl)
      ->type_name("URL");
  CLI::Option* id = arguments::requireText(
      upload->add_option("--session", options->session,
                         "The session that uploads; everybody on this computer can see it there"));
  id->type_name("ID");
  arguments::addFile(*upload, "--session-file", options->sessionFile,
                     "The session that uploads, in the first line of this file; - for standard input")
      ->excludes(id);
  upload->add_option("--name", options->name, "The file's name on the server")
      ->type_name("NAME")
      ->default_str("its own");
  upload->add_option("--job", options->job, "The job it belongs to")->type_name("ID");
  upload->add_flag("--expect-continue", options->afterContinue, "Ask the server before the file is sent");
  upload->footer(
      "Example: ztclient upload a.sdf --url https://atlas:9943/perlbin/upload.pl --session-file id.txt\n"
      "Without --session and --session-file the variable ZTCLIENT_SESSION names the session.");
  upload->callback([options, &status] {
    run(*options);
    status = done;
  });
}
