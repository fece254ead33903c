#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tovinCore/Utf8.h"
#include "ztclient/answers/CallAnswer.h"
#include "ztclient/input/JsonValue.h"
#include "ztservice/call/Answer.h"
#include "ztservice/call/Template.h"

using namespace ztservice::call;
using testing::HasSubstr;

namespace {

const ztservice::Service& shop() {
  static const ztservice::Service service = ztservice::load(ZTB_TEST_DATA "/call/shop.wsdl");
  return service;
}

Target target(std::string_view operation, std::string_view port) {
  return findOperation(shop(), operation, port);
}

std::string between(const std::string& text, const std::string& begin, const std::string& end) {
  const size_t from = text.find(begin), to = text.rfind(end);
  return from == text.npos || to == text.npos ? text
                                              : text.substr(from + begin.size(), to - from - begin.size());
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
  for (size_t at = 0; (at = text.find(what, at)) != text.npos; at += by.size())
    text.replace(at, what.size(), by);
  return text;
}

Request requestOf(const Target& to, const std::string& json, bool check = true) {
  return makeRequest(shop(), *to.port, *to.operation, readJson(json, "json"), {"", check});
}

std::string findingsOf(const RequestError& error) {
  std::string text;
  for (const Finding& one : error.findings()) text += (text.empty() ? "" : "; ") + one.toString();
  return text;
}

// What an order is sent as, without prefixes; or all that is wrong with it.
std::string sent(const std::string& json, bool check = true) {
  try {
    const std::string body = requestOf(target("send", "document"), json, check).body;
    return replaced(between(body, "<ns1:order", "</ns1:order>"), "ns1:", "");
  } catch (const RequestError& e) {
    return findingsOf(e);
  }
}

struct Row {
  const char* json;
  const char* wanted;
};

TEST(Requests, AreXmlInTheOrderOfTheType) {
  for (const auto& [json, wanted] : std::vector<Row>{
           {R"({"code": "AB1", "@lang": "de", "price": [1, 2.50], "@n": 1})",
            R"( lang="de" n="1"><code>AB1</code><price>1</price><price>2.50</price>)"},
           {R"({"price": 123456789012345678901234567890.25})",
            "><price>123456789012345678901234567890.25</price>"},
           {R"({"colour": null})", R"(><colour xsi:nil="true"/>)"},
           {R"({"colour": {"$": " red "}})", "><colour> red </colour>"},
           {R"({"codes": ["AB1", "CD22"], "size": "green"})", "><codes>AB1 CD22</codes><size>green</size>"},
           {R"({"money": {"$": 1.5, "@currency": "EU1"}})", R"(><money currency="EU1">1.5</money>)"},
           {R"({"text": {"$": ["a<", {"b": "x"}, "\t&\r", {"i": "y"}, {"b": "z"}]}})",
            "><text>a&lt;<b>x</b>\t&amp;&#13;<i>y</i><b>z</b></text>"},
           {R"({"text": {"$": "all", "i": ["1", "2"], "b": "3"}})",
            "><text>all<b>3</b><i>1</i><i>2</i></text>"},
           {R"({"pairs": {"v": [1, 2], "k": ["a", "b"]}})",
            "><pairs><k>a</k><v>1</v><k>b</k><v>2</v></pairs>"},
           {R"({"pairs": {"k": ["a", "b", "c"], "v": 1}})",
            "><pairs><k>a</k><v>1</v><k>b</k><k>c</k></pairs>"},
           {R"({"pay": {"cash": 3}})", "><pay><cash>3</cash></pay>"},
           {R"({"pay": {"pin": 1, "card": "AB1"}})", "><pay><card>AB1</card><pin>1</pin></pay>"},
           {R"({"pay": {"bank": "b", "card": "AB1"}})", "><pay><card>AB1</card><bank>b</bank></pay>"},
           {R"({"circle": {"@id": "x", "r": 1e-3}, "square": {"a": 2}})",
            R"(><circle id="x"><r>1e-3</r></circle><square><a>2</a></square>)"},
           {R"({"shape": [{"$type": "square", "a": 1}, {"$type": "Circle", "r": "INF"}]})",
            "><square><a>1</a></square><circle><r>INF</r></circle>"},
           {R"({"form": {"$type": "Square", "a": 1}})", R"(><form xsi:type="Square"><a>1</a></form>)"},
           {R"({"form": {"$type": "{urn:shop}Square", "a": 1}})",
            R"(><form xsi:type="Square"><a>1</a></form>)"},
           {R"({"any": 7})", R"(><any xsi:type="xsd:int">7</any>)"},
           {R"({"any": {"$type": "xs:date", "$": "2026-02-28"}})",
            R"(><any xsi:type="xsd:date">2026-02-28</any>)"},
           {R"({"any": {"@a": 1, "b": ["x", {"c": true}], "d": null}})",
            R"(><any a="1"><b>x</b><b><c xsi:type="xsd:boolean">true</c></b><d xsi:nil="true"/></any>)"},
           {R"({"name": "{urn:shop}thing", "fixed": 7})", "><name>thing</name><fixed>7</fixed>"},
           {R"({"$any": ["<a xmlns='urn:a'/>", "<b/>"]})", "><a xmlns='urn:a'/><b/>"},
           {R"({"self": {"self": {"short": -32768}}})", "><self><self><short>-32768</short></self></self>"},
       })
    EXPECT_EQ(sent(json), wanted) << json;
  EXPECT_EQ(requestOf(target("send", "document"), "{}").body.find("<ns1:order/>") == std::string::npos,
            false);
}

TEST(Requests, NameEachFaultByItsPath) {
  for (
      const auto& [json, wanted] : std::vector<Row>{
          {R"({"cod": "AB1"})", R"(cod: there is no such member; did you mean "code"?)"},
          {R"({"code": "AB"})", R"(code: "AB" does not match the pattern [A-Z]{2}\d+)"},
          {R"({"code": "AB1234"})", R"(code: "AB1234" has the length 6, 5 allowed)"},
          {R"({"price": [1.234, 0, "1,5"]})",
           R"(price: 3 given, 2 allowed; price[0]: 1.234 has 3 fraction digits, 2 allowed; price[1]: 0 is not more than 0; price[2]: "1,5" is no decimal)"},
          {R"({"colour": "blue", "size": "blue"})",
           R"(colour: "blue" is none of red, green; size: "blue" is of none of the types of the union)"},
          {R"({"codes": "AB1 x"})", R"(codes: "x" does not match the pattern [A-Z]{2}\d+)"},
          {R"({"money": 1})", "money.@currency: is missing"},
          {R"({"money": {"@currency": "AB1", "@curency": 1, "x": 2}})",
           R"(money.@curency: there is no such attribute; did you mean "@currency"?; money.x: there is no such member; money: has no text: give it as "$")"},
          {R"({"@lang": "no language", "@n": 2, "fixed": 8})",
           R"(@lang: "no language" is no language; @n: is fixed as 1; fixed: is fixed as 7)"},
          {R"({"pay": {}})", "pay: one of cash, card, pin, card, bank is missing"},
          {R"({"pay": {"cash": 1, "card": "AB1", "pin": 2}})",
           "pay.cash: does not go with card, which is of another alternative"},
          {R"({"pay": {"pin": 1}})", "pay.card: is missing"},
          {R"({"pairs": {"v": 1}})", "pairs.k: is missing"},
          {R"({"pairs": {"k": ["a", "b", "c", "d"]}})", "pairs.k: 4 given, 3 allowed"},
          {R"({"code": null, "short": [1, 2]})",
           "short: 2 given, 1 allowed; code: is null, but cannot be nil"},
          {R"({"short": 32768, "when": "2026-02-29T00:00:00Z"})",
           R"(when: "2026-02-29T00:00:00Z" is no dateTime; short: 32768 is more than 32767)"},
          {R"({"form": {}})", R"(form: is of an abstract type: give "$type", one of Circle, Square)"},
          {R"({"form": {"$type": "Circel"}})", R"(form: no type Circel; did you mean "Circle"?)"},
          {R"({"form": {"$type": "{urn:shop}Money", "$": 1}})",
           "form: {urn:shop}Money does not come from {urn:shop}Shape; form.@currency: is missing"},
          {R"({"shape": {}})", "shape: is abstract: give one of circle, square in its place"},
          {R"({"text": {"$": ["a"], "c": 1}})", R"(text.c: there is no such member; did you mean "b"?)"},
          {R"({"pairs": "x", "self": [{}]})", "pairs: a text, where an object is wanted"},
          {R"({"$any": "<a>"})", "$any: is no XML: mismatched tag at 1:6"},
          {R"({"$any": ["<a/>", "<b/>", "<c/>"]})", "$any: 3 given, 2 allowed"},
          {R"({"$headers": {"sesion": 1}})",
           R"($headers.sesion: there is no such header; did you mean "session"?)"},
          {R"({"code": "\u0001", "any": {"a b": 1}})",
           "code: the byte 0x01 at 0 cannot stand in XML; code: \"\x01\" does not match the pattern "
           "[A-Z]{2}\\d+; any.a b: is no name of an element"},
      })
    EXPECT_EQ(sent(json), wanted) << json;
}

TEST(Requests, AreSentWithoutTheCheckWhereTheyCanBe) {
  EXPECT_EQ(sent(R"({"cod": "x", "price": [0, 1, 2], "short": "x", "pay": {"cash": 1, "card": 2}})", false),
            "><price>0</price><price>1</price><price>2</price><pay><cash>1</cash><card>2</card></"
            "pay><short>x</short><cod>x</cod>");
  EXPECT_THAT(sent(R"({"code": "\u0001"})", false), HasSubstr("cannot stand in XML"));
  std::string deep = "1";
  for (int i = 0; i < 300; ++i) deep = R"({"self": )" + deep + '}';
  EXPECT_THAT(sent(deep, false), HasSubstr("is more than 200 elements deep"));
}

TEST(Requests, FollowTheBinding) {
  const Request document = requestOf(target("send", ""), R"({"$headers": {"session": "s"}, "code": "AB1"})");
  EXPECT_EQ(
      document.toWire(),
      "POST /soap HTTP/1.1\r\nHost: shop.invalid\r\nAccept: text/xml\r\nAccept-Encoding: gzip, deflate\r\n"
      "Content-Type: text/xml; charset=utf-8\r\nSOAPAction: \"urn:shop:send\"\r\nContent-Length: 272\r\n\r\n"
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\" xmlns:ns1=\"urn:shop\">"
      "<soap:Header><ns1:session>s</ns1:session></soap:Header>"
      "<soap:Body><ns1:order><ns1:code>AB1</ns1:code></ns1:order></soap:Body></soap:Envelope>\n");
  const Request twelve = requestOf(target("send", "twelve"), "{}");
  EXPECT_THAT(
      twelve.toWire(),
      HasSubstr("\r\nContent-Type: application/soap+xml; charset=utf-8; action=\"urn:shop:send\"\r\n"));
  EXPECT_THAT(twelve.body, HasSubstr("\"http://www.w3.org/2003/05/soap-envelope\""));
  const std::string rpc =
      requestOf(
          target("add", ""),
          R"({"numbers": [1, 2], "grid": [[1, 2, 3], [4, 5, 6]], "rows": [[], [7]], "who": {"k": "a"}})")
          .body;
  EXPECT_EQ(
      between(rpc, "<soap:Body>", "</soap:Body>"),
      R"(<ns1:add soap:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">)"
      R"(<numbers soapenc:arrayType="xsd:int[2]" xsi:type="soapenc:Array"><item xsi:type="xsd:int">1</item><item xsi:type="xsd:int">2</item></numbers>)"
      R"(<grid soapenc:arrayType="xsd:int[2,3]" xsi:type="soapenc:Array"><item xsi:type="xsd:int">1</item><item xsi:type="xsd:int">2</item><item xsi:type="xsd:int">3</item><item xsi:type="xsd:int">4</item><item xsi:type="xsd:int">5</item><item xsi:type="xsd:int">6</item></grid>)"
      R"(<rows soapenc:arrayType="xsd:int[][2]" xsi:type="soapenc:Array"><item soapenc:arrayType="xsd:int[0]" xsi:type="soapenc:Array"/><item soapenc:arrayType="xsd:int[1]" xsi:type="soapenc:Array"><item xsi:type="xsd:int">7</item></item></rows>)"
      R"(<who xsi:type="ns2:Pairs"><ns2:k xsi:type="xsd:string">a</ns2:k></who></ns1:add>)");
  const std::string values = R"({"id": 5, "tag": "a b&ü"})";
  EXPECT_THAT(requestOf(target("find", "get"), values).toWire(),
              HasSubstr("GET /http/find?id=5&tag=a%20b%26%C3%BC HTTP/1.1\r\n"));
  EXPECT_THAT(requestOf(target("find", "place"), values).toWire(),
              HasSubstr("POST /http/find/5/ofa%20b%26%C3%BC HTTP/1.1\r\n"));
  EXPECT_THAT(requestOf(target("find", "form"), values).toWire(),
              HasSubstr("\r\nContent-Length: 23\r\n\r\nid=5&tag=a%20b%26%C3%BC"));
  try {
    requestOf(target("add", ""), R"({"numbers": 1, "grid": [[1], [2, 3]], "rowss": []})");
    ADD_FAILURE();
  } catch (const RequestError& e) {
    EXPECT_EQ(
        findingsOf(e),
        "numbers: a number, where a list is wanted; grid: its rows are not of one length; rows: is missing; "
        "who: is missing; rowss: there is no such part; did you mean \"rows\"?");
  }
}

// What they show can be sent, in every binding and both ways.
TEST(Templates, MakeValidRequestsAndAnswers) {
  size_t count = 0;
  for (const ztservice::Port& port : shop().ports()) {
    for (const ztservice::Operation& operation : port.operations()) {
      for (const bool isFull : {true, false}) {
        const std::string text = makeTemplate(shop(), port, operation, {isFull, false});
        EXPECT_NO_THROW(makeRequest(shop(), port, operation, readJson(text, "template"))) << text;
        ++count;
        if (port.protocol() == ztservice::Protocol::http) continue;
        const std::string answered = makeTemplate(shop(), port, operation, {isFull, true});
        const std::string xml = makeAnswer(shop(), port, operation, readJson(answered, "template"));
        AnswerOptions strict;
        strict.isStrict = true;
        const Answer read = readAnswer(shop(), port, operation, xml, strict);
        // What was read makes the same envelope again.
        EXPECT_EQ(makeAnswer(shop(), port, operation, read.values), xml) << answered;
      }
    }
  }
  EXPECT_EQ(count, 12U);
  const std::string text = makeTemplate(shop(), *target("send", "").port, *target("send", "").operation);
  for (const char* line :
       {"  \"code\": \"AA0\",  // Code, pattern [A-Z]{2}\\d+, maxLength 5, optional\n",
        "  // \"self\": Order, optional\n", "    // \"card\" (another choice): Code, pattern",
        "  \"colour\": \"red\",  // Colour: red | green, optional, may be null\n"})
    EXPECT_THAT(text, HasSubstr(line));
}

std::string envelope(const std::string& body, const std::string& header = "") {
  return R"(<s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/" xmlns:t="urn:shop" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema" xmlns:enc="http://schemas.xmlsoap.org/soap/encoding/">)" +
         header + "<s:Body>" + body + "</s:Body></s:Envelope>";
}

// The values, with the warnings behind them; or why there are none.
std::string answered(const Target& from, const std::string& xml, const AnswerOptions& options = {}) {
  try {
    const Answer answer = readAnswer(shop(), *from.port, *from.operation, xml, options);
    std::string text = callAnswer::toLine(answer.values);
    if (!answer.headers.isNull()) text = callAnswer::toLine(answer.headers) + text;
    for (const std::string& warning : answer.warnings) text += "; " + warning;
    if (!answer.fault) return text;
    return callAnswer::faultText(*answer.fault) + ' ' + callAnswer::toLine(answer.fault->detail);
  } catch (const tovin::Exception& e) {
    return "error: " + tovin::wideToUtf8(e.getMessage());
  }
}

std::string receipt(const std::string& inside, const AnswerOptions& options = {}) {
  return answered(target("send", ""), envelope("<t:receipt>" + inside + "</t:receipt>"), options);
}

TEST(Answers, AreValuesByTheirTypes) {
  EXPECT_EQ(
      receipt("<t:number> 0012 </t:number><t:line> a </t:line><t:paid>1</t:paid><t:total>1.50</t:total>"),
      R"({"number":"0012","line":[" a "],"paid":true,"total":1.50})");
  EXPECT_EQ(receipt("<t:number>-7</t:number><t:total>INF</t:total>"), R"({"number":-7,"total":"INF"})");
  EXPECT_EQ(
      receipt(
          R"(<t:number>1</t:number><t:order lang="de"><t:codes> AB1  CD2 </t:codes><t:money currency="AB1">1.5</t:money>)"
          R"(<t:text>a<t:b>b</t:b>c</t:text><t:circle id="i"><t:r>1</t:r></t:circle><t:form xsi:type="t:Square"><t:a>2</t:a></t:form>)"
          R"(<x:y xmlns:x="urn:x" k="v">z</x:y></t:order>)"),
      R"({"number":1,"order":{"@lang":"de","codes":["AB1","CD2"],"money":{"@currency":"AB1","$":1.5},)"
      R"("text":{"$":["a",{"b":"b"},"c"]},"circle":[{"@id":"i","r":1}],"form":{"$type":"Square","a":2},"{urn:x}y":{"@k":"v","$":"z"}}})");
  EXPECT_EQ(
      receipt("<number>x</number><t:nmber/>"),
      R"({"number":"x","{urn:shop}nmber":""}; number: is of the namespace "", not of "urn:shop"; number: "x" is no long; nmber: there is no such member)");
  AnswerOptions strict;
  strict.isStrict = true;
  EXPECT_EQ(receipt("<t:line/>", strict), "error: number is missing");
  EXPECT_EQ(receipt("<t:number>1</t:number><t:x/>", strict), "error: x: there is no such member");
  EXPECT_EQ(
      receipt("<t:number>1</t:number><t:paid xsi:nil='1'/><t:order><t:colour xsi:nil='true'/></t:order>"),
      R"({"number":1,"paid":null,"order":{"colour":null}}; paid: is nil, but cannot be)");
  EXPECT_EQ(answered(target("send", ""), envelope("<t:receipt><t:number>1</t:number></t:receipt>",
                                                  "<s:Header><t:session>s</t:session></s:Header>")),
            R"({"session":"s"}{"number":1})");
}

// Names of types come out of answers, which are gone when the next one comes.
TEST(Services, OutliveTheNamesThatTheyAreAskedFor) {
  const auto ask = [](const std::string& local) {
    const auto space = std::make_unique<std::string>("http://www.w3.org/2001/XMLSchema");
    const auto name = std::make_unique<std::string>(local);
    return shop().type({*space, *name});
  };
  const ztservice::Type* first = ask("gMonthDay");
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(ask("noSuchTypeAtAllOfThatLength"), nullptr);
  EXPECT_EQ(ask("gMonthDay"), first);
  EXPECT_EQ(ask("noSuchTypeAtAllOfThatLength"), nullptr);
  EXPECT_EQ(first->name.local, "gMonthDay");
}

TEST(Answers, FollowReferencesWithoutGoingInCircles) {
  const auto rpc = [](const std::string& parts, const std::string& behind) {
    return answered(target("add", ""),
                    envelope("<m:addResponse xmlns:m=\"urn:sums\">" + parts + "</m:addResponse>" + behind));
  };
  EXPECT_EQ(rpc("<sum href='#s'/><numbers href='#n'/>",
                "<x id='n' enc:arrayType='xsd:int[2]'><i href='#s'/><i>2</i></x><x id='s' "
                "xsi:type='xsd:int'>1</x>"),
            R"({"sum":1,"numbers":[1,2]})");
  EXPECT_EQ(
      rpc("<sum>1</sum><numbers enc:arrayType='xsd:int[2,2]'><i>1</i><i>2</i><i>3</i><i>4</i></numbers>", ""),
      R"({"sum":1,"numbers":[[1,2],[3,4]]})");
  EXPECT_EQ(rpc("<sum>1</sum><numbers href='#n'/>", ""), "error: numbers: refers to #n, which is not there");
  EXPECT_EQ(rpc("<sum>1</sum><numbers href='#n'/>", "<x id='n'><i href='#n'/></x>"),
            "error: numbers.[0]: goes in circles: #n is inside itself");
  // Each level twice the one below: 2^30 elements in some hundred bytes.
  std::string levels;
  for (int i = 0; i < 30; ++i) {
    const std::string next = std::to_string(i + 1);
    levels += "<x id='l" + std::to_string(i) + "'><i href='#l" + next + "'/><i href='#l" + next + "'/></x>";
  }
  EXPECT_THAT(rpc("<sum>1</sum><other href='#l0'/>", levels + "<x id='l30'/>"),
              HasSubstr("more than 1000000 elements"));
}

TEST(Answers, TellFaultsOfBothVersions) {
  EXPECT_EQ(
      answered(target("send", ""),
               envelope("<s:Fault><faultcode>s:Server</faultcode><faultstring>sold "
                        "out</faultstring><faultactor>urn:me</faultactor><detail><t:outOfStock><t:left>0</"
                        "t:left></t:outOfStock></detail></s:Fault>")),
      R"(Server: sold out (urn:me) {"{urn:shop}outOfStock":{"left":0}})");
  EXPECT_EQ(
      answered(
          target("send", "twelve"),
          R"(<s:Envelope xmlns:s="http://www.w3.org/2003/05/soap-envelope"><s:Body><s:Fault><s:Code><s:Value>s:Sender</s:Value><s:Subcode><s:Value>x:Bad</s:Value></s:Subcode></s:Code><s:Reason><s:Text xml:lang="en">no</s:Text></s:Reason><s:Detail>words</s:Detail></s:Fault></s:Body></s:Envelope>)"),
      R"(Sender/Bad: no "words")");
  for (const char* port : {"document", "twelve"}) {
    const Target to = target("send", port);
    EXPECT_EQ(answered(to, makeFault(*to.port, true, "a < b")),
              std::string(port == std::string("twelve") ? "Sender" : "Client") + ": a < b null");
  }
}

TEST(Answers, RefuseWhatIsNoneOrTooMuch) {
  const auto of = [](const std::string& xml) { return answered(target("send", ""), xml); };
  EXPECT_EQ(of("<html/>"), "error: is no SOAP envelope, but has the element html");
  EXPECT_EQ(of(envelope("")), "error: the body is empty, and should have {urn:shop}receipt");
  EXPECT_EQ(of("<!DOCTYPE a [<!ENTITY b 'c'>]>" + envelope("")),
            "error: a document type, which messages must not have");
  EXPECT_EQ(of(envelope("<t:receipt>")), "error: mismatched tag");
  EXPECT_EQ(of(""), "error: no element found");
  std::string deep;
  for (int i = 0; i < 600; ++i) deep += "<a>";
  EXPECT_EQ(of(deep), "error: more than 500 elements deep");
  AnswerOptions few;
  few.limits.elements = 3;
  EXPECT_EQ(receipt("<t:number>1</t:number>", few), "error: more than 3 elements");
  few.limits.bytes = 10;
  EXPECT_EQ(receipt("", few), "error: more than 10 bytes");
  std::string many;
  for (int i = 0; i < 3000; ++i) many += "<a" + std::to_string(i) + "/>";
  EXPECT_THAT(receipt("<t:number>1</t:number><t:order><t:any>" + many + "</t:any></t:order>"),
              HasSubstr("more than 2000 different members"));
}

}  // namespace
