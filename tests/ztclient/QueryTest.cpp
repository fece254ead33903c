#include "tests/ztclient/Command.h"

namespace {

constexpr const char* document =
    "<job id='j1'><step state='done'>a</step><step state='failed' n='2'>b<part/></step><näme k='ü'/></job>";

TEST(Query, PrintsWhatIsSelectedInEachForm) {
  const testsupport::Shell shell;
  shell.write("job.xml", document);
  shell.write("text.xml", "<a t='é日本😀'/>");
  shell.write("query", "/job/step[2]/@n\r\n");
  shell.write("broken.xml", "");
  const std::string trouble = "ztclient query: …";
  const testsupport::Case cases[] = {
      {"job.xml '/job/step'", 0, "/job/step[1]/\n/job/step[2]/\n", ""},
      {"job.xml '/job/step/@state'", 0, "/job/step[1]/\n/job/step[2]/\n", ""},
      {"job.xml '//@n' --as properties", 0, "/job/step[2]/@n\t2\n", ""},
      {"job.xml '//step/@*' --as properties", 0,
       "/job/step[1]/@state\tdone\n/job/step[2]/@state\tfailed\n/job/step[2]/@n\t2\n", ""},
      {"job.xml '/job/näme/@k' --as string", 0, "ü\n", ""},
      {"job.xml 'concat(/job/@id, \"!\")' --as string", 0, "j1!\n", ""},
      {"job.xml --expression-file query --as int", 0, "2\n", ""},
      {"- --expression-file query --as string <job.xml", 0, "2\n", ""},
      {"job.xml 'count(//step) = 2' --as bool", 0, "true\n", ""},
      {"job.xml 'count(//step) = 3' --as bool", 1, "false\n", ""},
      {"job.xml 'count(//*)'", 0, "5\n", ""},
      {"job.xml '1 = 2'", 1, "false\n", ""},
      {"job.xml '\"false\"'", 0, "false\n", ""},
      {"job.xml -- '-1'", 0, "-1\n", ""},
      {"job.xml 'count(//*)' --as nodes", 2, "", "ztclient query: …; --as string prints its value\n"},
      {"job.xml '1=1' --as properties", 2, "", "ztclient query: …; --as bool prints its value\n"},
      {"job.xml 2147483647.5 --as int", 0, "2147483647\n", ""},
      {"job.xml 3000000000 --as int", 2, "",
       "ztclient query: 3000000000 is out of range, an integer is from -2147483648 to 2147483647\n"},
      {"job.xml '-1 div 0' --as int", 2, "", "ztclient query: -Infinity is out of range, …"},
      {"text.xml '//*[@t=\"é日本😀\"]'; ztclient tree text.xml --record t; ztclient query t "
       "'string-length(/a/@t)'",
       0, "/a/\n5\n", ""},
      {"text.xml 'substring(/a/@t, 2, 3)'", 0, "日本\xef\xbf\xbd\n", ""},
      {"job.xml '//nothing'", 1, "", ""},
      {"job.xml '//nothing' --as properties", 1, "", ""},
      {"job.xml '//step['", 2, "", trouble},
      {"job.xml '//step' --as list", 2, "", trouble},
      {"job.xml", 2, "", trouble},
      {"- --expression-file -", 2, "", trouble},
      {"missing.xml '//step'", 2, "",
       "ztclient query: Unable to open file missing.xml: No such file or directory\n"}};
  for (testsupport::Case row : cases) {
    row.line = "ztclient query " + row.line;
    shell.check({row});
  }
}

}  // namespace
