#include "tests/ztclient/Command.h"

namespace {

struct Case {
  std::string line;
  int status;
  std::string out;
  std::string err;
};

void check(const testsupport::Shell& shell, const std::vector<Case>& cases) {
  for (const Case& row : cases) {
    const auto outcome = shell.run(row.line);
    EXPECT_EQ(outcome.status, row.status) << row.line;
    EXPECT_EQ(outcome.out, row.out) << row.line;
    EXPECT_EQ(outcome.err, row.err) << row.line;
  }
}

TEST(ExitStatus, TellsEqualDifferentAndTrouble) {
  const testsupport::Shell shell;
  shell.folder().write("files/a", "mass 1.0000001\n");
  shell.folder().write("files/b", "mass 1.0000002\n");
  shell.folder().write("files/c", "mass 2.0\n");
  const std::string report =
      "Tolerance exceeded (0.0 < 5) at line 1\n\tFile1: a\n\tFile2: c\n\t1: mass 1.0000001\n\t2: mass 2.0\n"
      "\t        ^  ^\n";
  check(shell,
        {{"ztclient diff a a", 0, "", ""},
         {"ztclient diff a b", 0, "Difference within acceptable tolerance level (7.0 vs 5) detected\n", ""},
         {"ztclient diff a c; echo $?", 0, report + "1\n", ""},
         {"ztclient diff a - <b --tolerance 9 >report; echo $?; grep File2 report", 0, "1\n\tFile2: -\n", ""},
         {"ztclient diff a missing --binary", 2, "", "ztclient diff: Unable to open file missing\n"},
         {"ztclient diff a", 2, "", "ztclient diff: FILE2 is required; see ztclient diff --help\n"}});
}

TEST(ExitStatus, OfCredentialsTellsDamageFromTrouble) {
  const testsupport::Shell shell;
  shell.folder().write("files/secret", "geheim\nnot this\n");
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
  shell.folder().write("files/lines", "user\r\nserver\n");
  shell.folder().write("files/log", "<<<ConsoleEntry\nname\ta%tb\nConsoleEntry>>>\n");
  check(shell,
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
         {"printf 'a\\n' | ztclient diff - missing", 2, "", "ztclient diff: Unable to open file missing\n"},
         {"printf 'a\\n' | ztclient diff - log", 1,
          "Files not equal at line 1\n\tFile1: -\n\tFile2: log\n\t1: a\n\t2: <<<ConsoleEntry\n\t   ^^\n", ""},
         {"ztclient log missing", 2, "", "ztclient log: Unable to open file missing\n"},
         {"ztclient checksum a >/dev/full", 2, "", "ztclient checksum: cannot write to standard output\n"}});
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

TEST(Colours, AreForTerminalsWithoutNoColor) {
  const testsupport::Shell shell;
  const std::string red = "\x1b[1;31mztclient:\x1b[0m no command";
  // Some shells drop a function that they are to hand on.
  const std::string onTerminal =
      "export SHELL=$BASH; export -f ztclient; script -qec 'ztclient quary' /dev/null";
  EXPECT_NE(shell.run("unset NO_COLOR; " + onTerminal).out.find(red), std::string::npos);
  EXPECT_EQ(shell.run("export NO_COLOR=1; " + onTerminal).out.find('\x1b'), std::string::npos);
  EXPECT_EQ(shell.run("ztclient quary").err, "ztclient: no command \"quary\"; did you mean \"query\"?\n");
}

}  // namespace
