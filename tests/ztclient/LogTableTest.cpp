#include "tests/ztclient/Command.h"

namespace {

using testsupport::Case;
using testsupport::Shell;

std::string entry(const std::string& pairs) { return "<<<ConsoleEntry\n" + pairs + "ConsoleEntry>>>\n"; }

void writeLog(const Shell& shell) {
  shell.write("log", entry("time\t2026-11-26 01:00\nstate\tstarted\nnote\ta%tb\\c%nd,\"e\"\n") +
                         entry("Time\t2026-11-26T02:00+01:00\nSTATE\tfailed\nnote\tx\nnote\tagain\n") +
                         entry("state\tfailed\ncode\t7\n"));
}

TEST(LogTable, HasAColumnANameInTheOrderOfFirstSight) {
  const Shell shell;
  writeLog(shell);
  shell.check(
      {{"ztclient log log --csv", 0,
        "time,state,note,note,code\r\n2026-11-26 01:00,started,\"a\tb\\c\nd,\"\"e\"\"\",,\r\n"
        "2026-11-26T02:00+01:00,failed,x,again,\r\n,failed,,,7\r\n",
        ""},
       {"ztclient log log --tsv", 0,
        "time\tstate\tnote\tnote\tcode\n2026-11-26 01:00\tstarted\ta\\tb\\\\c\\nd,\"e\"\t\t\n"
        "2026-11-26T02:00+01:00\tfailed\tx\tagain\t\n\tfailed\t\t\t7\n",
        ""},
       {"ztclient log - --csv --columns code,State <log", 0,
        "code,State\r\n,started\r\n,failed\r\n7,failed\r\n", ""},
       {"cat log | ztclient log - --tsv --where code~.", 0, "state\tcode\nfailed\t7\n", ""},
       {"ztclient log log --csv --columns sate,note,note --where code=7", 0, "sate,note,note\r\n,,\r\n",
        "ztclient log: no entry has a sate\nztclient log: no entry has a note\nztclient log: no entry has a "
        "note\n"},
       {"ztclient log log --table --columns state,code,note", 0,
        "state    code  note\n───────  ────  ────────────────\nstarted        "
        "a\\tb\\\\c\\nd,\\\"e\\\"\nfailed         x\n"
        "failed   7\n",
        ""},
       {"COLUMNS=24 ztclient log log --table --columns state,code,note", 0,
        "state    code  note\n───────  ────  ─────────\nstarted        a\\tb\\\\c\\…\nfailed         "
        "x\nfailed   7\n",
        ""},
       {"COLUMNS=20 ztclient log log --table | head -1", 0, "ti…  st…  no…  no…\n",
        "ztclient log: columns without room at the end: 1\n"},
       {"printf '' | ztclient log - --csv", 0, "\r\n", ""},
       {"for i in {1..1001}; do printf '<<<ConsoleEntry\\nn%d\\t1\\nConsoleEntry>>>\\n' $i; done >many; "
        "ztclient "
        "log many --csv",
        2, "", "ztclient log: There are more than 1000 columns: name those that are wanted\n"},
       {"ztclient log many --csv --columns n1001 | uniq -c", 0, "      1 n1001\r\n   1000 \r\n      1 1\r\n",
        ""}});
}

TEST(LogFilter, LeavesOutEntriesInEveryForm) {
  const Shell shell;
  writeLog(shell);
  const auto codes = [](const std::string& conditions, const std::string& states) {
    return Case{"ztclient log log --csv --columns state " + conditions + " | tail -n +2 | tr '\\r\\n' '  '",
                0, states, ""};
  };
  shell.check(
      {codes("--where state=failed", "failed  failed  "),
       codes("--where State=failed --where code=7", "failed  "),
       codes("--where state=fail", ""),
       codes("--where 'state~^fail'", "failed  failed  "),
       codes("--where note=again", "failed  "),
       codes("--where note=x", "failed  "),
       codes("--where note=", ""),
       codes("--where 'state~[st]a.t'", "started  "),
       codes("--since 2026-11-26", "started  failed  "),
       codes("--since '2026-11-26 01:00' --until 2026-11-26T01:00Z", "started  failed  "),
       codes("--since 2026-11-26T01:00:00.001", ""),
       codes("--until 2026-11-26T00:59:59.999", ""),
       {"ztclient log log --where code=7", 0, "state: failed\ncode: 7\n\n", ""},
       {"ztclient log log --where code=7 --json", 0,
        "{\"values\":[[\"state\",\"failed\"],[\"code\",\"7\"]],\"position\":…}\n", ""},
       {"ztclient log log --where code=7 --since 2026-01-01", 0, "", ""},
       {"grep -iv time log >clockless; ztclient log clockless --until 2026-01-01", 0, "",
        "ztclient log: no entry says a time\n"},
       // Neither deep nor slow, whatever the value and the expression.
       {"printf '<<<ConsoleEntry\\nv\\t%050000d\\nConsoleEntry>>>\\n' 0 >long; ztclient log long --where "
        "'v~(0*)*1' --where 'v~(0|00)+$'",
        0, "", ""},
       {"cp log one; (" ZTB_COMMAND " log one --follow --where code=7 & sleep .4; head -c 9 log >one; sleep "
        ".4; cp log new; mv new one; sleep .5; kill $!)",
        0, "state: failed\ncode: 7\n\nstate: failed\ncode: 7\n\n",
        "ztclient log: one has become shorter: it is read from the beginning\nztclient log: one is another "
        "file now: it is read "
        "from the beginning\n"},
       {"(" ZTB_COMMAND " log log --follow --where code=7 & sleep .5; kill $!)", 0,
        "state: failed\ncode: 7\n\n", ""}});
}

TEST(LogCounts, AreByValueTheMostFrequentFirst) {
  const Shell shell;
  writeLog(shell);
  shell.check({{"ztclient log log --count-by state", 0,
                "count  state\n─────  ───────\n2      failed\n1      started\n", ""},
               {"ztclient log log --count-by state --csv", 0, "count,state\r\n2,failed\r\n1,started\r\n", ""},
               {"ztclient log log --count-by note --json --since 2026-01-01", 0,
                "{\"value\":\"a\\tb\\\\c\\nd,\\\"e\\\"\",\"count\":1}\n{\"value\":\"x\",\"count\":1}\n", ""},
               {"ztclient log log --count-by code --json", 0,
                "{\"value\":null,\"count\":2}\n{\"value\":\"7\",\"count\":1}\n", ""},
               {"ztclient log log --count-by cod --tsv", 0, "count\tcod\n3\t\n",
                "ztclient log: no entry has a cod\n"}});
}

TEST(LogTable, RefusesWhatHasNoEffect) {
  const Shell shell;
  writeLog(shell);
  const auto refused = [](const std::string& arguments, const std::string& why) {
    return Case{"ztclient log log " + arguments, 2, "", "ztclient log: …" + why + "…"};
  };
  shell.check({refused("--columns a", "--columns requires --csv, --tsv or --table"),
               refused("--columns a --json", "--columns requires"), refused("--csv --tsv", "excludes"),
               refused("--csv --json", "excludes"), refused("--table --follow", "excludes"),
               refused("--count-by a --follow", "excludes"),
               refused("--count-by a --csv --columns b", "excludes"),
               refused("--where state", "takes NAME=VALUE or NAME~REGEX, not \"state\""),
               refused("--where =x", "takes NAME=VALUE"), refused("--where 'a~('", "\"(\" is no expression"),
               refused("--where 'a~(x{99}){99}'", "the expression is too large"),
               refused("--where a~$(printf '%02000d' 0)", "the expression is too large"),
               refused("--since yesterday", "--since: takes a time as …, not \"yesterday\""),
               refused("--until ''", "--until: the value is empty")});
}

}  // namespace
