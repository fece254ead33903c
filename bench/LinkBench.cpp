// Protocol links, beside the same link as concatenated narrow strings with curl's own escape function.
#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include <string>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/client/CProtocolLinkBuilder.h"

namespace {

const std::pair<const wchar_t*, const wchar_t*> parameters[] = {{L"limit", L"100"},
                                                                {L"query", L"c1ccccc1C(=O)O & more"},
                                                                {L"title",
                                                                 L"Gr\xF6\xDF"
                                                                 L"e \x20AC"},
                                                                {L"format", L"sdf"}};

void LinkBuilder(benchmark::State& state) {
  for (auto _ : state) {
    CProtocolLinkBuilder builder(L"https://atlas:9943", L"Find Similar Molecules");
    builder.SetProgressMessage(L"Looking for similar molecules");
    for (const auto& [name, value] : parameters) builder.SetParameter(name, value);
    benchmark::DoNotOptimize(builder.Construct());
  }
}

// What a program that holds UTF-8 would write; the parameters are in order already.
void LinkCurlEscape(benchmark::State& state) {
  CURL* curl = curl_easy_init();
  const auto escape = [&](const std::string& text) {
    char* escaped = curl_easy_escape(curl, text.data(), static_cast<int>(text.size()));
    const std::string copy = escaped;
    curl_free(escaped);
    return copy;
  };
  std::pair<std::string, std::string> narrow[std::size(parameters)];
  for (size_t i = 0; i < std::size(parameters); ++i) {
    narrow[i] = {tovin::wideToUtf8(parameters[i].first), tovin::wideToUtf8(parameters[i].second)};
  }
  for (auto _ : state) {
    std::string link = "https://atlas:9943";
    link += "/perlbin/runjob.pl?_protocol=" + escape("Find Similar Molecules");
    link += "&_progressmessage=" + escape("Looking for similar molecules");
    for (const auto& [name, value] : narrow) link += "&" + escape(name) + "=" + escape(value);
    benchmark::DoNotOptimize(link.data());
  }
  curl_easy_cleanup(curl);
}

BENCHMARK(LinkBuilder);
BENCHMARK(LinkCurlEscape);

}  // namespace
