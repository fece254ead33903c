#include "tests/ztclient/Command.h"

namespace {

TEST(Completion, InBashOffersWhatTheCommandKnows) {
  const testsupport::Shell shell;
  shell.folder().write("files/job.log", "");
  const std::pair<std::string, std::string> cases[] = {{"qu", "query"},
                                                       {"c", "credentials cache checksum"},
                                                       {"credentials m", "make"},
                                                       {"credentials make --xm", "--xmldb"},
                                                       {"query job.xml --as n", "nodes"},
                                                       {"tree --j", "--json"},
                                                       {"log jo", "job.log"},
                                                       {"diff query --b", "--binary"}};
  for (const auto& [words, offered] : cases) {
    const auto outcome =
        shell.run("source " ZTB_MANUAL "/ztclient.bash\nCOMP_WORDS=(ztclient " + words +
                  ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_ztclient\necho \"${COMPREPLY[*]}\"");
    EXPECT_EQ(outcome.out, offered + "\n") << words << outcome.err;
  }
}

TEST(Completion, InZshTakesEachArgumentInItsPlace) {
  const testsupport::Shell shell;
  const std::string load =
      "zsh -fc '_arguments() { print -rl -- \"$@\" }; _describe() { : }; source " ZTB_MANUAL
      "/_ztclient >/dev/null; ";
  const auto query = shell.run(load + "_ztclient_query' | grep -E '^[*]?:|--as'");
  EXPECT_EQ(query.out.substr(0, query.out.find("--as")), ":FILE:_files\n:XPATH:_files\n") << query.err;
  EXPECT_NE(query.out.find(":value:(nodes properties string int bool)"), std::string::npos) << query.out;
  EXPECT_EQ(shell.run(load + "_ztclient_checksum' | grep -E '^[*]?:'").out, "*:STRING:_files\n");
}

TEST(Completion, AndManualAreWellFormed) {
  const testsupport::Shell shell;
  for (const std::string line : {"bash -n " ZTB_MANUAL "/ztclient.bash", "zsh -n " ZTB_MANUAL "/_ztclient",
                                 "mandoc -T lint -W error " ZTB_MANUAL "/ztclient.1",
                                 "grep -qF '\\-\\-expect\\-continue' " ZTB_MANUAL "/ztclient.1"}) {
    const auto outcome = shell.run(line);
    EXPECT_EQ(outcome.status, 0) << line << '\n' << outcome.out << outcome.err;
  }
}

}  // namespace
