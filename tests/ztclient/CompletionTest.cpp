#include <cstdlib>

#include "tests/ztclient/Command.h"

namespace {

// What is typed, and what each shell offers for its last word.
struct Typed {
  std::string words;
  std::string offered;
};

const Typed typed[] = {{"qu", "query"},
                       {"c", "cache call checksum credentials"},
                       {"credentials m", "make"},
                       {"credentials make --xm", "--xmldb"},
                       {"query job.xml --as n", "nodes"},
                       {"query job.xml --as=n", "nodes"},
                       {"link a b --as an", "anonymous"},
                       {"cache --arg job", "jobid="},
                       {"cache --require=rec", "recnum recordtype"},
                       {"tree --j", "--json"},
                       {"log jo", "job.log"},
                       {"log --position jo", ""},
                       {"query job.log jo", ""},
                       {"diff query --b", "--binary"},
                       {"--color a", "always auto"}};

bool has(const std::string& program) {
  return std::system(("command -v " + program + " >/dev/null").c_str()) == 0;
}

// The last lines of a script put the words on standard output, of an option's value without the option.
void expectOffers(const std::string& before, const std::string& around, const std::string& behind) {
  const testsupport::Shell shell;
  shell.write("job.log", "");
  for (const Typed& row : typed) {
    const auto outcome = shell.run(before + around + "ztclient " + row.words + behind +
                                   " | sed 's/^--[a-z]*=//' | sort -u | xargs");
    EXPECT_EQ(outcome.out, row.offered + "\n") << row.words << '\n' << outcome.err;
  }
}

TEST(Completion, InBashOffersWhatTheCommandKnows) {
  // As the shell does it, '=' is a word of its own.
  expectOffers("source " ZTB_MANUAL "/ztclient.bash\n", "line='",
               "'\nCOMP_WORDS=(${line//=/ = })\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_ztclient\n"
               "printf '%s\\n' \"${COMPREPLY[@]}\"");
}

TEST(Completion, InFishOffersWhatTheCommandKnows) {
  if (!has("fish")) GTEST_SKIP() << "fish is not there";
  expectOffers("", "HOME=$PWD fish -N -c 'source " ZTB_MANUAL "/ztclient.fish; complete -C \"",
               "\"' | cut -f1");
}

// What its helper of all options is told; the helper itself wants a terminal.
TEST(Completion, InZshTakesEachArgumentInItsPlace) {
  if (!has("zsh")) GTEST_SKIP() << "zsh is not there";
  const testsupport::Shell shell;
  const auto told = [](const std::string& function) {
    return "zsh -fc '_arguments() { print -rl -- \"$@\" }; source " ZTB_MANUAL
           "/_ztclient >/dev/null; _ztclient_" +
           function + "' | grep -E -e '^[*]?:|--as=|--mask|--position|--json'";
  };
  shell.check(
      {{told("query"), 0,
        "--as=[What to print\\: …]:value:compadd -S \"\" -- nodes properties string int "
        "bool\n:FILE:_files\n:XPATH: \n",
        ""},
       {told("link"), 0,
        "--as=[…]:value:compadd -S \"\" -- default anonymous session …\n:SERVER: \n:PROTOCOL: \n", ""},
       {told("cache"), 0, "--mask=[…]:value:compadd -S \"\" -- user jobid …\n", ""},
       {told("log"), 0, "--position=[Begin at this byte]:value: \n--json[…]\n:FILE:_files\n", ""},
       {told("checksum"), 0, "*:STRING: \n", ""}});
}

TEST(Completion, AndManualAreWellFormed) {
  const testsupport::Shell shell;
  shell.check({{"bash -n " ZTB_MANUAL "/ztclient.bash", 0, "", ""},
               {"! command -v zsh >/dev/null || zsh -n " ZTB_MANUAL "/_ztclient", 0, "", ""},
               {"mandoc -T lint -W warning " ZTB_MANUAL "/ztclient.1", 0, "", ""},
               {"man=$(mandoc -T utf8 " ZTB_MANUAL
                "/ztclient.1 | col -b); for word in --expect-continue 'default: 5' "
                "'Exit status 1: the files' ZTCLIENT_SESSION EXAMPLES JSON FILES '0x100' 'SEE ALSO'; do "
                "grep -qFe \"$word\" <<<\"$man\" || echo \"$word\"; done",
                0, "", ""}});
}

}  // namespace
