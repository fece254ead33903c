#include <gtest/gtest.h>

#include "tests/ztclient/Command.h"

using testsupport::Shell;

namespace {

const std::string shop = ZTB_TEST_DATA "/call/shop.wsdl";

TEST(CallCommand, ShowsAndFillsRequests) {
  const Shell shell;
  shell.write("order.json", "{\n  // a comment\n  \"code\": \"AB1\", \"price\": [1.10]\n}\n");
  const std::string send = "ztclient call '" + shop + "' send ";
  shell.check({
      {"ztclient call '" + shop + "' --list", 0,
       "send  document, SOAP 1.1\nsend  twelve, SOAP 1.2\nadd   encoded, SOAP 1.1\nfind  get, HTTP\nfind  "
       "place, HTTP\nfind  form, HTTP\n",
       ""},
      {send + "--template minimal", 0, "// send of document\n{\n}\n", ""},
      {send + "--template >full && " + send + "--input full --dry-run --xml | cmp - <(" + send +
           "--template --xml)",
       0, "", ""},
      {send + "--input order.json price[1]:=2 money.@currency=AB1 money.\\$=3 pay.cash=4 --dry-run --xml", 0,
       "…<ns1:order><ns1:code>AB1</ns1:code><ns1:price>1.10</ns1:price><ns1:price>2</ns1:price><ns1:money "
       "currency=\"AB1\">3</ns1:money><ns1:pay><ns1:cash>4</ns1:cash></ns1:pay></ns1:order>…",
       ""},
      {send + "code=AB1 code=CD2 --dry-run", 2, "", "ztclient call: code: 2 given, 1 allowed\n"},
      {send + "price=1 price=2 --dry-run --xml", 0, "…<ns1:price>1</ns1:price><ns1:price>2</ns1:price>…", ""},
      {send + "--dry-run --xml --port twelve", 0, "…/soap-envelope\"…", ""},
      {send + "--dry-run --header 'X-Session: s' --address https://a.b:8/c?d", 0,
       "POST /c?d HTTP/1.1\r\nHost: a.b:8\r\n…\r\nX-Session: s\r\n…", ""},
      {send + "--dry-run cod=1 price=x", 2, "",
       "ztclient call: cod: there is no such member; did you mean \"code\"?\nztclient call: price: \"x\" is "
       "no decimal\n"},
      {send + "--dry-run cod=1 --no-check --xml", 0, "…<cod>1</cod>…", ""},
      {"ztclient call '" + shop + "' sent", 2, "",
       "ztclient call: no operation \"sent\"; did you mean \"send\"?\n"},
      {send + "--port documnt", 2, "", "ztclient call: no port \"documnt\"; did you mean \"document\"?\n"},
      {"ztclient call '" + shop + "'", 2, "", "…OPERATION is required…"},
      {"printf '{\"a\":\\n [1,}' | " + send + "--input -", 2, "", "ztclient call: standard input:2:5: …"},
      {"printf '{\"a\":1, \"a\":2}' | " + send + "--input -", 2, "",
       "ztclient call: standard input: \"a\" is there twice\n"},
      {"printf '[1]' | " + send + "--input - a=1", 2, "", "…the input is no object\n"},
  });
  for (const char* field : {"a", "=1", ".a=1", "a..b=1", "a[=1", "a[x]=1", "a[1]=1", "a[0]b=1", "code:={",
                            "a=1 a.b=2", "a=1 a[0]=2"}) {
    const auto outcome = shell.run(send + "--dry-run " + field);
    EXPECT_EQ(outcome.status, 2) << field;
    EXPECT_NE(outcome.err, "") << field;
    EXPECT_EQ(outcome.out, "") << field;
  }
  shell.check({{send + "--header nothing", 2, "", "…is no \"Name: value\"…"},
               {send + "--template --dry-run", 2, "", "…excludes…"},
               {send + "--parallel 2", 2, "", "…requires --input…"}});
}

// A stand-in that checks what it gets answers what it was given, and samples.
TEST(MockCommand, AnswersCalls) {
  const Shell shell;
  shell.write("answers/send.json", R"({"number": 9007199254740993, "line": ["a", "b"]})");
  shell.write("answers/add.xml",
              "<s:Envelope "
              "xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body><s:Fault><faultcode>s:Client</"
              "faultcode><faultstring>too\nmany</faultstring></s:Fault></s:Body></s:Envelope>");
  shell.write("many", "{\"code\": \"AB1\"}\n\n{\"code\": 7}\n{\"cod\n");
  const std::string command = ZTB_COMMAND;
  const auto with = [&](const std::string& options, const std::string& calls) {
    return "rm -f log; '" + command + "' mock '" + shop + "' " + options +
           " >log & trap \"kill $!\" EXIT; while [ ! -s log ]; do sleep .02; done; "
           "call() { ztclient call '" +
           shop + "' \"$@\" --address $(head -1 log); }; " + calls;
  };
  shell.check({
      {with("--answers answers", "call send; tail -n +2 log"), 0,
       "{\n \"number\": 9007199254740993,\n \"line\": [\n  \"a\",\n  \"b\"\n ]\n}\nsend: 200\n", ""},
      {with("", "call send --output table | head -2; call send code=AB --no-check; echo $?; tail -n +2 log"),
       0,
       "number                 1\nline[0]                text\n1\nsend: 200\nsend: refused, request: code: "
       "\"AB\" does not match the "
       "pattern [A-Z]{2}\\d+\n",
       "ztclient call: Client: request: code: \"AB\" does not match the pattern [A-Z]{2}\\d+\n"},
      {with("--answers answers", "call add numbers:=[] grid:=[[1]] rows:=[] who.k=a; echo $?"), 0, "1\n",
       "ztclient call: Client: too\nmany\n"},
      {with("", "call send --input many --parallel 3 | cut -c1-60; echo ${PIPESTATUS[0]}"), 0,
       "{\"number\":1,…\n{\"$error\":\"code: …\n{\"$error\":\"input:1:…\n2\n", ""},
      {with("",
            "call send --output xml | head -c 5; call send --port twelve --output xml | grep -c "
            "2003/05/soap-envelope"),
       0, "<?xml1\n", ""},
      {with("", "call add numbers:=[] grid:=[[1]] rows:=[] who.k=a --trace --output xml >/dev/null"), 0, "",
       "> POST / HTTP/1.1\n…> Host: 127.0.0.1:…< HTTP/1.1 200 OK\n…"},
      {"ztclient call '" + shop + "' send --address http://127.0.0.1:1/ --seconds 5", 2, "",
       "ztclient call: http://127.0.0.1:1/: …\n"},
      {"ztclient mock '" + shop + "' --answers nowhere", 2, "", "…\"nowhere\" is no folder…"},
  });
}

}  // namespace
