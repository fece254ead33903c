#include <unistd.h>

#include "tests/ztclient/Command.h"

namespace {

using testsupport::Case;
using testsupport::Shell;

// Two runs with one of each kind.
void writeRuns(const Shell& shell) {
  shell.write("r1/same.txt", "x 1.5\n");
  shell.write("r2/same.txt", "x 1.5\n");
  shell.write("r1/near.txt", "x 1.00001\n");
  shell.write("r2/near.txt", "x 1.00002\n");
  shell.write("r1/sub/far.txt", "x 1.5\n&'a\n");
  shell.write("r2/sub/far.txt", "x 2.5\n&'b\n");
  shell.write("r1/gone", "");
  shell.write("r2/new", "");
}

TEST(FolderDiff, TellsEachFileInOrderOfPathAndTheSums) {
  const Shell shell;
  writeRuns(shell);
  const std::string lines =
      "only in r1: gone\nwithin tolerance: near.txt (0 fields differ, 1 within tolerance; …)\n"
      "only in r2: new\nequal: same.txt\ndifferent: sub/far.txt (2 fields differ, …)\n";
  shell.check(
      {{"ztclient diff r1 r2 --recursive", 1,
        lines +
            "5 files: 1 equal, 1 within tolerance, 1 different, 1 only in r1, 1 only in r2, 0 unreadable\n",
        ""},
       {"for jobs in 1 2 7 256; do ztclient diff r1/ r2 --recursive --json --jobs $jobs | md5sum; done | "
        "uniq "
        "| wc -l",
        0, "1\n", ""},
       {"ztclient diff r1 r2 --recursive --json --include gone --include near.txt", 1,
        "{\"path\":\"gone\",\"verdict\":\"onlyFirst\"}\n{\"path\":\"near.txt\",\"verdict\":\"within\","
        "\"summary\":{"
        "\"within\":1,…}}\n{\"summary\":{\"equal\":0,\"within\":1,\"different\":0,\"onlyFirst\":1,"
        "\"onlySecond\":"
        "0,\"unreadable\":0}}\n",
        ""},
       {"ztclient diff r1 r2 --recursive --exclude sub --exclude gone --exclude new", 0,
        "within…same.txt\n2 files: 1 equal, 1 within…", ""},
       {"ztclient diff r1 r2 --recursive --include '[ns]*.txt' --tolerance 0", 1,
        "different: near.txt…equal: same.txt\n2 files: …", ""},
       {"ztclient diff r1 r2 --recursive --include 's*/*.txt' --absolute 1", 1,
        "different: sub/far.txt (1 field differs, 1 within…", ""},
       {"ztclient diff r1 r2 --recursive --include near.txt --binary", 1,
        "different: near.txt (the bytes differ from byte 8 on)\n…", ""},
       {"ztclient diff r1 r1 --recursive | tail -1", 0, "4 files: 4 equal, …", ""},
       {"mkdir e1 e2; ztclient diff e1 e2 --recursive", 0, "0 files: 0 equal, …", ""}});
}

TEST(FolderDiff, HoldsOutAgainstWhateverLiesInFolders) {
  const Shell shell;
  shell.write("a/file", "1\n");
  shell.write("b/file/inside", "1\n");
  const std::string run = "ztclient diff a b --recursive 2>&1 | grep -av -e ': file' -e inside -e files:";
  shell.check(
      {{"ztclient diff a b --recursive | head -1", 0, "different: file (a file and a folder)\n", ""},
       {"mkdir -p a/empty a/both b/both; " + run, 0, "only in a: empty/\n", ""},
       {"ztclient diff a b --recursive --include none", 0, "0 files: …", ""},
       {"rm -r a/empty; ln -s . a/ring; ln -s . b/ring; mkdir a/sub b/sub; ln -s .. a/sub/up; ln -s ../both "
        "b/sub/up; " +
            run,
        0, "equal: ring\ndifferent: sub/up (links to ./ and ./both/)\n", ""},
       {"rm -r ?/sub ?/ring; mkdir out; echo 1 >out/x; ln -s ../out a/l; ln -s ../out b/l; ln -s ../out "
        "b/m; " +
            run,
        0, "equal: l/x\nonly in b: m\n", ""},
       {"rm ?/[lm]; mkfifo a/pipe b/pipe a/p; echo >b/p; " + run, 0,
        "different: p (a pipe and a file)\nztclient diff: pipe: a pipe, which is never read\nunreadable: "
        "pipe\n",
        ""},
       {"ztclient diff a b --recursive 2>&1 >lines", 2, "ztclient diff: pipe: a pipe, which is never read\n",
        ""},
       {"rm ?/p*; ln -s none a/dead; ln -s self a/self; " + run, 0,
        "only in a: dead\nztclient diff: self: Too many…\nunreadable: self\n", ""},
       {"rm a/dead a/self; touch a/$'x\\xff' a/$'new\\nline'; " + run, 0,
        "only in a: new\\nline\nonly in a: x\xFF\n", ""},
       {"ztclient diff a/file b --recursive", 2, "",
        "ztclient diff: Unable to open folder a/file: Not a directory\n"},
       {"ztclient diff - b --recursive", 2, "",
        "ztclient diff: Unable to open folder -: No such file or directory\n"}});
  if (geteuid() == 0) return;  // who may read everything
  shell.check({{"mkdir -m 0 a/shut; mkdir b/shut; touch b/shut/x a/no; chmod 0 a/no; echo 1 >b/no; " + run, 0,
                "…unreadable: no\n…Permission denied\nunreadable: shut/\n", ""}});
}

TEST(JUnitReport, HasACaseForEachPair) {
  const Shell shell;
  writeRuns(shell);
  const std::string head =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites tests=\"5\" failures=\"3\" errors=\"0\">\n  "
      "<testsuite "
      "name=\"r1 and r2\" tests=\"5\" failures=\"3\" errors=\"0\">\n";
  const std::string test = "<testcase classname=\"ztclient.diff\" name=\"";
  shell.check(
      {{"ztclient diff r1 r2 --recursive --junit out.xml >lines; cat out.xml", 0,
        head + "    " + test +
            "gone\">\n      <failure type=\"only in the first\"…tolerance: 5 significant digits\n…" + test +
            "near.txt\"/>\n…" + test + "sub/far.txt\">\n      <failure type=\"different\" message=\"" +
            "2 fields differ…\">tolerance: 5 significant digits\nline 1, field 2: &quot;1.5&quot; and "
            "&quot;2.5&quot;, absolute 1, relative 0.6667, 0 digits agree\nline 2, field 1: "
            "&quot;&amp;&#39;a&quot; and &quot;&amp;&#39;b&quot;\n</failure>…",
        ""},
       {"xmllint --noout out.xml", 0, "", ""},
       {"ztclient diff r1/near.txt r2/near.txt --junit one.xml; grep -c '<testcase .*/>' one.xml", 0,
        "Difference within…\n1\n", ""},
       {"printf 'x 9.5\\n' | ztclient diff r1/same.txt - --all --absolute 2 --relative 1 --junit one.xml "
        ">lines; "
        "echo $?; xmllint --xpath 'string(//failure)' one.xml",
        0, "1\ntolerance: absolute 2 or relative 1\nline 1, field 2: \"1.5\" and \"9.5\", absolute 8, …\n\n",
        ""},
       {"ztclient diff r1/same.txt none --junit one.xml; xmllint --xpath 'string(//error/@message)' one.xml",
        0, "Unable to open file none: No such file or directory\n",
        "ztclient diff: Unable to open file none: …"},
       {"printf 'a\\0' >a; printf 'b\\x1b[1m\\xff\\0' >b; ztclient diff a b --binary --junit one.xml >lines; "
        "xmllint --xpath 'string(//failure/@message)' one.xml",
        0, "the bytes differ from byte 0 on\n", ""},
       {"printf 'a \\x1b\\xff\\n' >a; printf 'a b\\n' >b; ztclient diff a b --junit one.xml >lines; xmllint "
        "--xpath 'string(//failure)' one.xml | tail -2",
        0, "line 1, field 2: \"�ÿ\" and \"b\"\n\n", ""},
       {"seq 1 30 >a; seq 101 130 >b; ztclient diff a b --tolerance 3 --junit one.xml >lines; grep -c ^line "
        "one.xml; grep '^and' one.xml",
        0, "10\nand 20 more lines\n", ""}});
}

TEST(FolderDiff, RefusesWhatHasNoEffect) {
  const Shell shell;
  writeRuns(shell);
  const auto refused = [](const std::string& arguments, const std::string& why) {
    return Case{"ztclient diff r1/same.txt r2/same.txt " + arguments, 2, "", "ztclient diff: " + why + "…"};
  };
  shell.check(
      {refused("--include x", "--include requires --recursive"),
       refused("--exclude x", "--exclude requires --recursive"),
       refused("--jobs 2", "--jobs requires --recursive"), refused("--recursive --jobs 0", "--jobs: "),
       refused("--recursive --include ''", "--include: the value is empty"),
       refused("--recursive --all", "--"), refused("--recursive --context 1", "--context requires --all"),
       refused("--recursive --summary", "--summary requires --all"),
       refused("--json", "--json requires --all or --recursive"),
       refused("--key x", "--key requires --all or --recursive"),
       refused("--recursive --binary --relative 1", "--relative excludes --binary"),
       refused("--junit -", "--junit: standard output has the answer already"),
       refused("--junit r1/same.txt", "--junit: r1/same.txt is the document itself"),
       refused("--junit none/out.xml", "Unable to write file none/out.xml: No such file or directory"),
       refused("--junit /dev/full", "Unable to write file /dev/full: No space left on device")});
}

}  // namespace
