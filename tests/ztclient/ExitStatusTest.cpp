#include <cstdlib>

#include "tests/ztclient/Command.h"

namespace {

TEST(ExitStatus, TellsEqualDifferentAndTrouble) {
  const testsupport::Shell shell;
  shell.write("a", "mass 1.0000001\n");
  shell.write("b", "mass 1.0000002\n");
  shell.write("c", "mass 2.0\n");
  const std::string report =
      "Tolerance exceeded (0.0 < 5) at line 1\n\tFile1: a\n\tFile2: c\n\t1: mass 1.0000001\n\t2: mass 2.0\n"
      "\t        ^  ^\n";
  shell.check(
      {{"ztclient diff a a", 0, "", ""},
       {"ztclient diff a b", 0, "Difference within acceptable tolerance level (7.0 vs 5) detected\n", ""},
       {"ztclient diff a c; echo $?", 0, report + "1\n", ""},
       {"ztclient diff a - <b --tolerance 9 >report; echo $?; grep File2 report", 0, "1\n\tFile2: -\n", ""},
       {"ztclient diff a missing --binary", 2, "",
        "ztclient diff: Unable to open file missing: No such file or directory\n"},
       {"ztclient diff missing ''", 2, "",
        "ztclient diff: Unable to open file missing: No such file or directory\nztclient diff: Unable to "
        "open file : No such file or directory\n"},
       {"mkdir f; ztclient diff f f", 2, "",
        "ztclient diff: Unable to open file f: Is a directory\nztclient diff: Unable to open file f: Is a "
        "directory\n"},
       {"ztclient diff a b c", 2, "", "ztclient diff: \"c\" is too much: only FILE1 FILE2 can be given; …"},
       {"ztclient diff -t 3 a b", 2, "", "ztclient diff: no option \"-t\"; see ztclient diff --help\n"},
       {"ztclient diff --tolerance x a b", 2, "", "ztclient diff: --tolerance: \"x\" is no number; …"},
       {"ztclient diff --tolerance -1 a b", 2, "", "ztclient diff: --tolerance: less than no digit; …"},
       {"ztclient diff --tolerance 2147483648 a b", 2, "",
        "ztclient diff: --tolerance: 2147483648 is out of range; …"},
       {"ztclient diff --tolerance 5 --binary a b", 2, "", "ztclient diff: --tolerance excludes --binary; …"},
       {"ztclient diff a", 2, "", "ztclient diff: FILE2 is required; see ztclient diff --help\n"}});
}

TEST(ExitStatus, OfCredentialsTellsDamageFromTrouble) {
  const testsupport::Shell shell;
  shell.write("secret", "geheim\nnot this\n");
  const std::string make = "ztclient credentials make --user ann --password-file secret --role-bit 3";
  const auto shown = shell.run(make + " | ztclient credentials show --json --show-password");
  EXPECT_EQ(shown.status, 0) << shown.err;
  EXPECT_NE(shown.out.find("\"password\": \"geheim\""), std::string::npos) << shown.out;
  const auto hidden = shell.run(make + " | ztclient credentials show");
  EXPECT_EQ(hidden.out.find("geheim"), std::string::npos) << hidden.out;
  EXPECT_EQ(shell.run("text=$(" + make + "); ztclient credentials show ${text:0:40}").status, 2);
  EXPECT_EQ(shell.run("text=$(" + make + "); ztclient credentials show ${text:0:6}B${text:7}").status, 1);
}

TEST(ExitStatus, OfOneLineCommandsComesWithTheirAnswer) {
  const testsupport::Shell shell;
  shell.write("lines", "user\r\nserver\n");
  shell.write("log", "<<<ConsoleEntry\nname\ta%tb\nConsoleEntry>>>\n");
  shell.check(
      {{"ztclient endpoint atlas", 0, "https://atlas:9943/dravolin/locator\n", ""},
       {"ztclient endpoint --reverse http://atlas:9944/dravolin/locator", 0, "http://atlas\n", ""},
       {"ztclient link atlas:9944 'Find Similar' --param limit=10", 0,
        "http://atlas:9944/perlbin/runjob.pl?_protocol=Find%20Similar&limit=10\n", ""},
       {"ztclient cache --arg user=ann --arg jobid=7 --require 0x3", 0, "user=ann&jobid=7\n", ""},
       {"ztclient cache --arg user=ann --require 3", 1, "", "ztclient cache: Missing argument(s): jobid\n"},
       {"[[ $(ztclient checksum user server) == $(ztclient checksum --lines lines) ]]", 0, "", ""},
       {"ztclient endpoint atlas --release 0403", 0, "https://atlas:9945/dravolin/locator\n", ""},
       {"ztclient credentials make --login-time 9223372036854775808", 2, "",
        "ztclient credentials: --login-time: 9223372036854775808 is out of range; "
        "see ztclient credentials make --help\n"},
       {"ztclient log log", 0, "name: a\tb\n\n", ""},
       {"ztclient log log --position 9223372036854775807", 0, "", ""},
       {"printf 'a\\n' | ztclient diff - missing", 2, "",
        "ztclient diff: Unable to open file missing: No such file or directory\n"},
       {"printf 'a\\n' | ztclient diff - log", 1,
        "Files not equal at line 1\n\tFile1: -\n\tFile2: log\n\t1: a\n\t2: <<<ConsoleEntry\n\t   ^^\n", ""},
       {"ztclient log missing", 2, "",
        "ztclient log: Unable to open file missing: No such file or directory\n"},
       {"ztclient checksum a >/dev/full", 2, "",
        "ztclient checksum: cannot write to standard output: No space left on device\n"}});
}

TEST(ExitStatus, OfHelpIsDoneAndEachHelpHasAnExample) {
  const testsupport::Shell shell;
  for (const std::string command :
       {"session", "wsdl", "tree", "query", "credentials", "credentials make", "credentials show", "endpoint",
        "link", "upload", "cache", "diff", "checksum", "log"}) {
    const auto outcome = shell.run("ztclient " + command + " --help");
    EXPECT_EQ(outcome.status, 0) << command;
    const size_t example = outcome.out.find("\nExample: ztclient ");
    ASSERT_NE(example, std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("ztclient " + command, example), std::string::npos) << outcome.out;
    EXPECT_EQ(outcome.err, "");
  }
}

// Whatever reads standard input tells its failure from its end, and prints nothing then.
TEST(ExitStatus, OfInputThatCannotBeReadIsTrouble) {
  const testsupport::Shell shell;
  shell.write("empty", "");
  for (const std::string command :
       {"checksum --lines -", "credentials make --password-file -", "credentials show", "log -",
        "diff - empty", "tree -", "query - /a", "query empty --expression-file -", "wsdl -",
        "session --wsdl -", "upload - --name n --session s --url http://127.0.0.1:1/",
        "link a b --as session-file:-"}) {
    const std::string name = command.substr(0, command.find(' '));
    const std::string start = name == "session" ? "…" : "";
    shell.check({{"mkdir -p folder; ztclient " + command + " <folder", 2, start,
                  "ztclient " + name + ": Unable to read file -: Is a directory\n"},
                 {"ztclient " + command + " <&-", 2, start,
                  "ztclient " + name + ": Unable to read file -: Bad file descriptor\n"}});
  }
}

TEST(ExitStatus, OfOutputThatIsLostIsTrouble) {
  const testsupport::Shell shell;
  for (const std::string arguments :
       {"--version", "--help", "--help-all", "diff --help", "help", "endpoint atlas"}) {
    shell.check({{"ztclient " + arguments + " >/dev/full", 2, "",
                  "ztclient…: cannot write to standard output: No space left on device\n"},
                 {"ztclient " + arguments + " >&-", 2, "",
                  "ztclient…: cannot write to standard output: Bad file descriptor\n"}});
  }
  shell.check(
      {{"yes '' | head -200000 >many; (ztclient checksum --lines many; ztclient --help-all; "
        "for i in {1..9}; do ztclient --help-all; done) | true; echo ${PIPESTATUS[0]} >/dev/null; "
        "ztclient --help-all | (exec <&-; sleep .2); echo ${PIPESTATUS[0]}",
        0, "141\n", ""}});
}

TEST(WrongUse, OfValuesThatAreEmptyOrStrangeIsSaid) {
  const testsupport::Shell shell;
  shell.write("a.xml", "<a/>");
  const std::string empty = "the value is empty; …";
  shell.check(
      {{"ztclient checksum --lines ''", 2, "", "ztclient checksum: --lines: " + empty},
       {"ztclient tree a.xml --record=", 2, "", "ztclient tree: --record: " + empty},
       {"ztclient session --wsdl ''", 2, "", "ztclient session: --wsdl: " + empty},
       {"ztclient session --server ''", 2, "", "ztclient session: --server: takes scheme, host and port, …"},
       {"ztclient session --server notaurl", 2, "",
        "ztclient session: --server: takes …, not \"notaurl\"; …"},
       {"ztclient upload a.xml --url u --session s", 2, "", "ztclient upload: --url: takes a URL …"},
       {"ztclient upload a.xml --url http://a/ --session ''", 2, "", "ztclient upload: --session: " + empty},
       {"ztclient upload a.xml --url http://a/", 2, "",
        "ztclient upload: --session-file, or ZTCLIENT_SESSION, …"},
       {"ztclient upload - --url http://a/ --session s", 2, "",
        "ztclient upload: With standard input, --name …"},
       {"ztclient endpoint $'a\\nb'", 2, "", "ztclient endpoint: TEXT: a control character …"},
       {"ztclient link a p --param =1", 2, "", "ztclient link: --param: the name before '=' is empty; …"},
       {"ztclient endpoint $'\\xff'", 2, "", "ztclient endpoint: TEXT: the value is not UTF-8; …"},
       {"ztclient query a.xml /a --as strin", 2, "",
        "ztclient query: --as: no value \"strin\"; did you mean \"string\"? …"},
       {"ztclient cache --require usr", 2, "",
        "ztclient cache: --require: no argument \"usr\"; did you mean \"user\"?; …"},
       {"ztclient help quary", 2, "", "ztclient help: no command \"quary\"; did you mean \"query\"?; …"},
       {"ztclient help diff | head -1", 0, "Compare two result files\n", ""},
       {"ztclient -V", 0, "ztclient …\n", ""},
       {"COLUMNS=60 ztclient help upload | grep -v Example | awk 'length > 60'", 0, "", ""}});
}

// An answer stands where there is one, with what is strange about the question beside it.
TEST(Warnings, TellWhatIsStrangeAboutAnAnswer) {
  const testsupport::Shell shell;
  const std::string link = "/perlbin/runjob.pl?_protocol=P";
  shell.check(
      {{"ztclient endpoint ''", 0, "https://:9943/dravolin/locator\n",
        "ztclient endpoint: no host in \"\"\n"},
       {"ztclient endpoint -q 'a b'", 0, "https://a b:9943/dravolin/locator\n", ""},
       {"ztclient endpoint 'a b'", 0, "…", "ztclient endpoint: a blank is in the host \"a b\"\n"},
       {"ztclient endpoint atlas:abc", 0, "…", "ztclient endpoint: port abc is no number\n"},
       {"ztclient endpoint [::1]:99999", 0, "…", "ztclient endpoint: port 99999 is not in 1 to 65535\n"},
       {"ztclient endpoint ftp://x", 0, "…", "ztclient endpoint: scheme ftp is neither http nor https\n"},
       {"ztclient endpoint HTTP://x", 0, "…", "ztclient endpoint: the scheme is not written …"},
       {"ztclient endpoint https://ann:pw@atlas:9943/p?a:b", 0, "https://ann:pw@atlas:9943/p?a:b\n", ""},
       {"ztclient link 'javascript:alert(1)' P", 0, "http://javascript:alert(1)" + link + "\n",
        "ztclient link: port alert(1) is no number\n"},
       {"ztclient link httpd P", 0, "httpd" + link + "\n",
        "ztclient link: no scheme in \"httpd\", which begins with http\n"},
       {"ztclient link atlas P --param a=1 --param a=2", 0, "http://atlas" + link + "&a=1\n",
        "ztclient link: a is given twice, the first holds\n"},
       {"ztclient cache --arg user=a --arg USER=b", 0, "user=b\n",
        "ztclient cache: USER is given twice, the last holds\n"},
       {"ztclient cache --arg a=b", 0, "\n", "ztclient cache: no argument a\n"},
       {"ztclient cache --arg user=a --require user,jobid", 1, "",
        "ztclient cache: Missing argument(s): jobid\n"},
       {"ztclient cache --arg user=a --arg jobid=7 --mask user", 0, "user=a\n", ""}});
}

TEST(SessionId, ComesFromAFileOrTheEnvironmentToo) {
  const testsupport::Shell shell;
  shell.write("id", "s 1\r\nrest\n");
  const std::string link = "http://a/perlbin/runjob.pl?_protocol=P&_session=";
  shell.check({{"ztclient link a P --as session-file:id", 0, link + "s%201\n", ""},
               {"ztclient link a P --as session-file:- <id", 0, link + "s%201\n", ""},
               {"ZTCLIENT_SESSION=e ztclient link a P --as session", 0, link + "e\n", ""},
               {"ztclient link a P --as session", 2, "", "ztclient link: --as: session wants the variable …"},
               {"ztclient link a P --as session-file:none", 2, "",
                "ztclient link: Unable to open file none: No such …"},
               {": >id; ztclient link a P --as session-file:id", 2, "",
                "ztclient link: id: The session id is empty\n"}});
}

TEST(Names, OfFilesPassByteForByteAndAreShownEscaped) {
  const testsupport::Shell shell;
  shell.check(
      {{"n=$'\\xff\\xed\\xa0\\x80\\e[1m'; echo '<a/>' >\"$n\"; ztclient tree \"$n\" && ztclient diff \"$n\" "
        "\"$n\" && "
        "ztclient tree \"$n\" --record \"$n.r\" && ztclient tree \"$n.r\" && ls | grep -c r$",
        0, "a\na\n1\n", ""},
       {"ztclient log $'\\xff\\e[1m\\u009b\\u202e'", 2, "",
        "ztclient log: Unable to open file \\xff\\u001b[1m\\u009b\\u202e: No such file or directory\n"},
       {"TMPDIR=/none ztclient log - </dev/null", 2, "",
        "ztclient log: /none: Unable to make a temporary file, TMPDIR names the folder: No such file …"}});
}

TEST(Messages, ArePutTogetherFromPlaceTextAndReason) {
  const testsupport::Shell shell;
  shell.write("bad.xml", "<a>\n <b></c></a>");
  shell.check(
      {{"ztclient tree bad.xml", 2, "", "ztclient tree: bad.xml:2:…: Parse error: mismatched tag\n"},
       {"ztclient query - /a <bad.xml", 2, "", "ztclient query: -:2:…: Parse error: mismatched tag\n"},
       {"ztclient wsdl bad.xml", 2, "", "ztclient wsdl: bad.xml:2:…: Parse error: mismatched tag\n"},
       {"ztclient wsdl none", 2, "", "ztclient wsdl: none: Unable to open file: No such file or directory\n"},
       {"ztclient tree -v bad.xml", 2, "",
        "ztclient tree: reads bad.xml\nztclient tree: bad.xml:2:…\n  in CWsdlParser::parse()\nztclient tree: "
        "took … s\n"},
       {"ztclient tree - </dev/zero", 2, "", "ztclient tree: -:1:1: Parse error: …"},
       {"echo '<a/>' | ztclient tree - --record z; printf more >>z; ztclient tree z", 2, "",
        "ztclient tree: z: 4 bytes stand behind the record\n"}});
}

// The exception's text stays in the answer; what else there is to say is said beside it, once.
TEST(Service, NamesWhatIsMissingAndWhatIsLeftOut) {
  const testsupport::Shell shell;
  const std::string open =
      "<definitions xmlns='http://schemas.xmlsoap.org/wsdl/' xmlns:x='http://www.w3.org/2001/XMLSchema' "
      "xmlns:s='http://schemas.xmlsoap.org/wsdl/soap/' targetNamespace='urn:t' xmlns:t='urn:t'>\n";
  shell.write("imp.wsdl",
              open +
                  "<import namespace='u' location='o.wsdl'/><types>\n<x:schema targetNamespace='urn:t'>"
                  "<x:include schemaLocation='notthere.xsd'/></x:schema></types><message name='M'><part "
                  "name='p' type='t:a'/>"
                  "<part name='q' type='t:b'/></message><portType name='P'><operation name='o'><input "
                  "message='t:M'/></operation>"
                  "</portType><binding name='B' type='t:P'><operation name='o'/></binding><service "
                  "name='S'/><service name='L'>"
                  "<port binding='t:B'><s:address location='x'/></port></service></definitions>");
  const std::string warning =
      "ztclient wsdl: 1 import is not followed, 1 further service (S) is not shown: --all shows what is left "
      "out\n";
  const std::string failure =
      "ztclient wsdl: notthere.xsd: Unable to open file: No such file or directory (included by "
      "imp.wsdl:3:35)\n";
  shell.check({{"ztclient wsdl imp.wsdl --types", 0,
                "…service L\n…cannot be resolved: Unable to open file\n…", warning + failure},
               {"ztclient wsdl imp.wsdl --types --json | grep -c '\"error\": \"Unable to open file\"'", 0,
                "2\n", warning + failure},
               {"ztclient wsdl -q imp.wsdl | head -2", 0, "target namespace urn:t\nservice L\n", ""}});
  shell.check(
      {{"ztclient wsdl imp.wsdl --all", 0,
        "target namespace urn:t\nservice S\nservice L\n…cannot be resolved…",
        "ztclient wsdl: imp.wsdl:2:1: o.wsdl: No such file or directory\n"
        "ztclient wsdl: imp.wsdl:3:35: notthere.xsd: No such file or directory\n"
        "ztclient wsdl: 0 types, 2 not resolved: run with --json to see which\n"},
       {"ztclient wsdl - --all --operation p <imp.wsdl", 2, "",
        "ztclient wsdl: no operation \"p\"; did you mean \"o\"?\n"},
       {"ztclient wsdl none --all --json", 2,
        "{\n \"error\": \"Unable to open file none: No such file or directory\"\n}\n", ""},
       {"ztclient wsdl imp.wsdl --flatten flat.wsdl && ztclient wsdl flat.wsdl --all -q | head -2", 0,
        "target namespace urn:t\nservice S\n", ""},
       {"ztclient wsdl imp.wsdl --changes flat.wsdl", 0, "", ""},
       {"ztclient wsdl imp.wsdl --all --limit file-bytes=9", 2, "",
        "ztclient wsdl: imp.wsdl: larger than a document may be\n"},
       {"ztclient wsdl imp.wsdl --all --limit bytes=9", 2, "",
        "ztclient wsdl: --limit: \"bytes=9\" is no NAME=N; the names are connect-seconds, …\n"},
       {"ztclient wsdl imp.wsdl --operation o", 2, "",
        "ztclient wsdl: --operation requires --all, --flatten or --changes; see ztclient wsdl --help\n"},
       {"sed 's/name=.q. type/name=\"r\" type/' imp.wsdl | ztclient wsdl imp.wsdl --changes -", 1,
        "breaks callers: port , operation o, input: removed part q\n"
        "breaks callers: port , operation o, input: added part r, required\n",
        ""}});
}

TEST(Form, ShowsChoicesInChoices) {
  const testsupport::Shell shell;
  const auto element = [](const std::string& name) {
    return "<x:element name='" + name + "' type='x:int'/>";
  };
  shell.write(
      "choice.wsdl",
      "<definitions xmlns='http://schemas.xmlsoap.org/wsdl/' xmlns:s='http://schemas.xmlsoap.org/wsdl/soap/' "
      "xmlns:x='http://www.w3.org/2001/XMLSchema' xmlns:t='t'><types><x:schema "
      "targetNamespace='t'><x:complexType name='T'><x:sequence>"
      "<x:choice>" +
          element("a") + "<x:sequence>" + element("b") + "<x:choice maxOccurs='3'>" + element("c") +
          element("d") + "</x:choice></x:sequence><x:sequence maxOccurs='2'>" + element("e") + element("f") +
          "</x:sequence></x:choice><x:choice>" + element("g") + element("h") + "</x:choice>" + element("i") +
          "</x:sequence></x:complexType></x:schema></types><message name='m'><part name='p' "
          "type='t:T'/></message>"
          "<portType name='P'><operation name='o'><input message='m'/></operation></portType>"
          "<binding name='B' type='P'><s:binding/><operation name='o'><input><s:body/></input></operation>"
          "</binding><service name='S'><port name='p' binding='B'/></service></definitions>");
  shell.check(
      {{"ztclient wsdl choice.wsdl --all | sed -n '/p: T/,$s/^ *p: T//;/^  *.*: T/d;s/^          //p'", 0,
        "one of:\n- a: int\n- b: int\n  again and again:\n    one of:\n    - c: int, 1 to 3\n"
        "    - d: int, 1 to 3\n- again and again:\n    e: int, 1 to 2\n    f: int, 1 to 2\none of:\n- g: "
        "int\n"
        "- h: int\ni: int, required\n",
        ""}});
}

TEST(Record, TakesThePlaceOfAnOldOneWhole) {
  const testsupport::Shell shell;
  shell.write("a.xml", "<a n='Zürich €'><näme/></a>");
  shell.write("big.xml", "<a n='" + std::string(20000, 'x') + "'/>");
  shell.check({{"ztclient tree a.xml --record r; ztclient tree r; ztclient tree a.xml --record - | cmp - r",
                0, "a n=\"Zürich €\"\n  näme\n", ""},
               {"ztclient tree a.xml --json >1; ztclient tree r --json | cmp - 1", 0, "", ""},
               {"chmod 640 r; ln -s r l; ln -s new d; ztclient tree big.xml --record l; ztclient tree "
                "big.xml --record d; "
                "stat -c %A r; readlink l d; cmp r new; ls -A",
                0, "-rw-r-----\nr\nnew\n…", ""},
               {"echo old >r; (ulimit -f 8; ztclient tree big.xml --record r); cat r; ls r.*", 2, "old\n",
                "ztclient tree: Unable to write file r: File too large\nls: …"},
               {"ztclient tree a.xml --record /dev/full", 2, "",
                "ztclient tree: Unable to write file /dev/full: No space …"},
               {"ztclient tree a.xml --record ./a.xml", 2, "",
                "ztclient tree: --record: ./a.xml is the document itself; …"},
               {"ztclient tree a.xml --record no/r", 2, "",
                "ztclient tree: Unable to write file no/r: No such file …"}});
}

// Whether there is a program that gives a command a terminal.
bool hasTerminal() { return std::system("script -qec true /dev/null >/dev/null 2>&1 </dev/null") == 0; }

TEST(Colours, AreForTerminalsThatWantThem) {
  if (!hasTerminal()) GTEST_SKIP() << "script(1) makes no terminal here";
  const testsupport::Shell shell;
  shell.write("a.xml", "<a b='&#x9b;&#x202e;ü'/>");
  const std::string red = "\x1b[1;31mztclient:\x1b[0m no command …";
  const std::string plain = "ztclient: no command …";
  // Some shells drop a function that they are to hand on.
  const std::string prepare = "unset NO_COLOR; export TERM=xterm SHELL=$BASH; export -f ztclient; ";
  const auto on = [&](const std::string& set, const std::string& line) {
    return prepare + set + "script -qec '" + line + "' /dev/null | tr -d '\\r'";
  };
  shell.check({{on("", "ztclient quary"), 0, red, ""},
               {on("export NO_COLOR=1; ", "ztclient quary"), 0, plain, ""},
               {on("export TERM=dumb; ", "ztclient quary"), 0, plain, ""},
               {on("", "ztclient --color=never quary"), 0, plain, ""},
               {"ztclient --color=always quary", 2, "", red},
               {"ztclient quary", 2, "", "ztclient: no command \"quary\"; did you mean \"query\"?\n"},
               {on("", "ztclient tree a.xml"), 0, "a b=\"\\u009b\\u202eü\"\n", ""},
               {"ztclient tree a.xml", 0, "a b=\"\xc2\x9b\xe2\x80\xaeü\"\n", ""}});
  // A log that is followed is a table there, which is drawn over itself.
  shell.write("entry", "<<<ConsoleEntry\nstate\tdone\nConsoleEntry>>>\n");
  shell.check(
      {{prepare + "cp entry log; (sleep .4; cat entry >>log) & script -qec \"stty rows 12 cols 40; timeout "
                  "--foreground -s INT 2.5 " ZTB_COMMAND " log log --follow\" /dev/null | tr -d '\\r'",
        0,
        "…1 entry, …a second\nstate\n─────\ndone\n\x1b[4A\x1b[J2 entries, …a "
        "second\nstate\n─────\ndone\ndone\n…",
        ""}});
}

}  // namespace
