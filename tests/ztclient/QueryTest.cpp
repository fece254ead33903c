#include "tests/ztclient/Command.h"

namespace {

constexpr const char* document =
    "<job id='j1'><step state='done'>a</step><step state='failed' n='2'>b<part/></step><näme k='ü'/></job>";

struct Case {
  std::string arguments;
  int status;
  std::string out;
};

TEST(Query, PrintsWhatIsSelectedInEachForm) {
  const testsupport::Shell shell;
  shell.folder().write("files/job.xml", document);
  shell.folder().write("files/query", "/job/step[2]/@n\r\n");
  shell.folder().write("files/broken.xml", "");
  const Case cases[] = {{"job.xml '/job/step'", 0, "/job/step[1]/\n/job/step[2]/\n"},
                        {"job.xml '/job/step/@state'", 0, "/job/step[1]/\n/job/step[2]/\n"},
                        {"job.xml '//@n' --as properties", 0, "/job/step[2]/@n\t2\n"},
                        {"job.xml '//step/@*' --as properties", 0,
                         "/job/step[1]/@state\tdone\n/job/step[2]/@state\tfailed\n/job/step[2]/@n\t2\n"},
                        {"job.xml '/job/näme/@k' --as string", 0, "ü\n"},
                        {"job.xml 'concat(/job/@id, \"!\")' --as string", 0, "j1!\n"},
                        {"job.xml --expression-file query --as int", 0, "2\n"},
                        {"- --expression-file query --as string <job.xml", 0, "2\n"},
                        {"job.xml 'count(//step) = 2' --as bool", 0, "true\n"},
                        {"job.xml 'count(//step) = 3' --as bool", 1, "false\n"},
                        {"job.xml '//nothing'", 1, ""},
                        {"job.xml '//nothing' --as properties", 1, ""},
                        {"job.xml '//step['", 2, ""},
                        {"job.xml '//step' --as list", 2, ""},
                        {"job.xml", 2, ""},
                        {"- --expression-file -", 2, ""},
                        {"missing.xml '//step'", 2, ""}};
  for (const Case& row : cases) {
    const auto outcome = shell.run("ztclient query " + row.arguments);
    EXPECT_EQ(outcome.status, row.status) << row.arguments << '\n' << outcome.err;
    EXPECT_EQ(outcome.out, row.out) << row.arguments;
    EXPECT_EQ(outcome.err.starts_with("ztclient query: "), row.status == 2) << row.arguments << outcome.err;
  }
}

}  // namespace
