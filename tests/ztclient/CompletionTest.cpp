#include <gtest/gtest.h>

#include "tests/ztclient/Command.h"

namespace {

TEST(Completion, InBashOffersWhatTheCommandKnows) {
  const testsupport::Shell shell;
  shell.folder().write("files/job.log", "");
  const struct {
    std::string words;
    std::string offered;
  } cases[] = {{"qu", "query"},
               {"c", "credentials cache checksum"},
               {"credentials m", "make"},
               {"credentials make --xm", "--xmldb"},
               {"query job.xml --as n", "nodes"},
               {"tree --j", "--json"},
               {"log jo", "job.log"},
               {"diff query --b", "--binary"}};
  for (const auto& row : cases) {
    const auto outcome =
        shell.run("source " ZTB_MANUAL "/ztclient.bash\nCOMP_WORDS=(ztclient " + row.words +
                  ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_ztclient\necho \"${COMPREPLY[*]}\"");
    EXPECT_EQ(outcome.out, row.offered + "\n") << row.words << outcome.err;
  }
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
