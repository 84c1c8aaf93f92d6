// The completions, as the shells themselves understand them.
#include "quorvane/app/manual/Completions.h"
#include "tests/manual/ManualRun.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace quorvane {
namespace {

// Prints what the completion offers for the last argument, and what readline offers where that is nothing.
constexpr std::string_view bashDriver = R"(
compopt() { instead=$2; }
source quorvane.bash
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
_quorvane
echo "${COMPREPLY[*]}${instead:+ ($instead)}"
)";

// Types each argument and a tab, and prints the line that this makes.
constexpr std::string_view zshDriver = R"(
zmodload zsh/zpty
zpty shell 'PS1= TERM=dumb zsh -f -i'
zpty -w shell 'fpath=($PWD $fpath); autoload -Uz compinit; compinit -u -D
show() { print -r -- "<$BUFFER>"; BUFFER=; }; zle -N show; bindkey "^X" show; print rea""dy'
zpty -r -m shell output '*ready*'
for line in "$@"; do
  zpty -w -n shell $line$'\t\x18'
  zpty -r -m shell output '*<*>*'
  print -r -- ${${output##*<}%%>*}
done
zpty -d shell
)";

struct Case {
  std::string_view typed, offered;
};

class CompletionTests : public testing::Test {
 protected:
  std::string in(const std::string& command) const {
    return outputOf("cd '" + folder_.path().bytes + "' && " + command);
  }

  const TempFolder folder_;
  const MessageCatalogue catalogue_ = MessageCatalogue::english();
};

TEST_F(CompletionTests, helpInBash) {
  folder_.write("quorvane.bash", bashCompletion());
  folder_.write("driver", bashDriver);
  const Case cases[] = {
      {"quorvane cl", "clean"},
      {"quorvane --home scan --quiet cl", "clean"},
      {"quorvane scan x", ""},
      {"quorvane --json ignore ''", "list add remove"},
      {"quorvane ignore add ''", " (default)"},
      {"quorvane --home ''", " (dirnames)"},
      {"quorvane clean --fr", "--from"},
      {"quorvane scan --fr", ""},
      {"quorvane history show --da", "--data-dir"},
      {"quorvane trash -- --da", " (default)"},
      {"quorvane undo --on-conflict ''", "skip keep-both"},
      {"quorvane --layout = ''", "auto linux macos"},
      {"quorvane --layout =", "auto linux macos"},
      {"quorvane --layout=li", "--layout=linux"},
      {"quorvane clean --select = bro", "browserCache (default)"},
  };
  for (const Case& each : cases)
    EXPECT_EQ(in("bash driver " + std::string(each.typed)), std::string(each.offered) + "\n") << each.typed;
}

TEST_F(CompletionTests, helpInZsh) {
  if (!isInstalled("zsh")) GTEST_SKIP() << "zsh is not installed";
  folder_.write("_quorvane", zshCompletion(catalogue_));
  folder_.write("driver", zshDriver);
  EXPECT_EQ(in("zsh -n _quorvane 2>&1"), "");
  const Case cases[] = {
      {"quorvane cl", "quorvane clean "},
      {"quorvane --home /tmp ignore r", "quorvane --home /tmp ignore remove "},
      {"quorvane scan --json --cat", "quorvane scan --json --category="},
      {"quorvane scan --category=lo", "quorvane scan --category=logs "},
      {"quorvane history sh", "quorvane history show "},
      {"quorvane undo --on-conflict k", "quorvane undo --on-conflict keep-both "},
      {"quorvane clean --select ins", "quorvane clean --select installers "},
      {"quorvane trash dri", "quorvane trash driver "},
      {"quorvane scan dri", "quorvane scan dri"},
  };
  std::string arguments, expected;
  for (const Case& each : cases) {
    arguments += " '" + std::string(each.typed) + "'";
    expected += std::string(each.offered) + "\n";
  }
  EXPECT_EQ(in("timeout 30 zsh -f driver" + arguments), expected);
}

TEST_F(CompletionTests, helpInFish) {
  if (!isInstalled("fish")) GTEST_SKIP() << "fish is not installed";
  folder_.write("quorvane.fish", fishCompletion(catalogue_));
  const Case cases[] = {
      {"quorvane cl", "clean"},
      {"quorvane --home ignore ig", "ignore"},
      {"quorvane --json ignore ", "add list remove"},
      {"quorvane history show --da", "--data-dir"},
      {"quorvane undo --on-conflict ", "keep-both skip"},
      {"quorvane clean --select bro", "browserCache"},
      {"quorvane trash quo", "quorvane.fish"},
      {"quorvane scan quo", ""},
  };
  std::string script = "source quorvane.fish", expected;
  for (const Case& each : cases) {
    script += "; echo (complete -C \"" + std::string(each.typed) + "\" | string replace -r \"\\t.*\" \"\")";
    expected += std::string(each.offered) + "\n";
  }
  EXPECT_EQ(in("HOME=\"$PWD\" fish --no-config -c '" + script + "' 2>&1"), expected);
}

}  // namespace
}  // namespace quorvane
