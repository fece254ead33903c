#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ztclient/Command.h"

using testing::HasSubstr;
using testing::Not;
using testsupport::Shell;

namespace {

const std::string attack = "</script><script>alert(1)</script><b onload='x'>";

// What a browser would make an element of is none.
void expectHarmless(const std::string& page) {
  for (const char* part : {"<script>alert", "<b onload", "</script><", "\u001b", "style=\""})
    EXPECT_THAT(page.substr(0, page.rfind("<script>\"use strict\"")), Not(HasSubstr(part)));
  EXPECT_THAT(
      page,
      HasSubstr(
          "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'sha256-"));
  EXPECT_THAT(page, testing::EndsWith("</script>\n</body>\n</html>\n"));
}

TEST(Pages, EscapeWhatOthersWrote) {
  const Shell shell;
  shell.write("a", "n\t" + attack + "\n1\t0.5\n2\tx\x1b\n");
  shell.write("b", "n\t" + attack + "\n1\t0.6\n2\ty\n" + attack + "\n");
  const std::string line = "ztclient diff a b --html out >/dev/null; cat out";
  const std::string page = shell.run(line).out;
  expectHarmless(page);
  EXPECT_THAT(page, HasSubstr("<mark class=\"d4\">0.5</mark>"));
  EXPECT_THAT(page, HasSubstr("<td class=\"added\">&lt;/script&gt;"));
  EXPECT_THAT(page, HasSubstr("<tr><th scope=\"row\">fields that differ</th><td>2</td></tr>"));

  shell.write("tree.xml", "<a b=\"&lt;/script>&lt;script>alert(1)&lt;/script>\"><c/><d e='\"'/></a>");
  const std::string tree = shell.run("ztclient tree tree.xml --html -").out;
  EXPECT_THAT(tree,
              HasSubstr(R"([2,"a",[["b","String","\u003c/script>\u003cscript>alert(1)\u003c/script>"]]],)"));
  EXPECT_THAT(tree, HasSubstr(R"([0,"d",[["e","String","\u0022"]]]]</script>)"));

  shell.write("log", "<<<ConsoleEntry\n" + attack + "\t" + attack + "\ntime\t2026-11-26\nConsoleEntry>>>\n");
  expectHarmless(shell.run("ztclient log log --html -").out);

  shell.write(
      "s.wsdl",
      "<definitions xmlns='http://schemas.xmlsoap.org/wsdl/' xmlns:s='http://schemas.xmlsoap.org/wsdl/soap/'>"
      "<portType name='P'><operation name='&lt;script>alert'/></portType><binding name='B' "
      "type='P'><s:binding/>"
      "<operation name='&lt;script>alert'/></binding><service name='S'><port name='p' binding='B'>"
      "<s:address location='&lt;b onload'/></port></service></definitions>");
  expectHarmless(shell.run("ztclient wsdl s.wsdl --all --html -").out);
  EXPECT_THAT(shell.run("ztclient wsdl s.wsdl --all --dot").out,
              HasSubstr("o0_0 [label=\"&lt;script&gt;alert\"];"));
}

TEST(Pages, OfFoldersLeadToTheirFiles) {
  const Shell shell;
  for (const char* name : {"1", "2"}) {
    shell.write(std::string(name) + "/x/same", "1\n");
    shell.write(std::string(name) + "/x/other", name);
  }
  shell.check(
      {{"ztclient diff 1 2 --recursive --html out >/dev/null; echo $?; ls out; grep -c "
        "'href=\"1.html\">x/other<' out/index.html; "
        "grep -c 'href=\"index.html\"' out/1.html",
        0, "1\n1.html\nindex.html\n1\n1\n", ""},
       {"ztclient diff 1/x/same 2/x/same --html 1/x/same", 2, "", "…is the document itself…"},
       {"ztclient diff 1/x/same 2/x/same --html -", 2, "", "…standard output has the answer already…"},
       {"touch file; ztclient diff 1 2 --recursive --html file", 2, "…", "…cannot make the folder file…"},
       {"ztclient wsdl x --html out", 2, "", "…requires --all…"},
       {"ztclient log x --html out --csv", 2, "", "…excludes…"}});
}

}  // namespace
