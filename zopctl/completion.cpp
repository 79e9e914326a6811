// Completion for bash, zsh and fish. A pattern "PATH:OPTION" names an option of a verb, as
// "nv read:--length", or with "*" one of all verbs. Scenarios are listed when they are completed.
#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "zopctl/documents.h"
#include "zopctl/global_options.h"
#include "zopctl/verb_table.h"

namespace zopctl {

static constexpr char SCENARIOS[] = "zop-modem-sim --list-scenarios 2>/dev/null";

using Words = std::vector<std::string>;

static std::string joined(const Words& words, const char* between) {
  return fmt::format("{}", fmt::join(words, between));
}

static std::string path_of(const Verb& verb) {
  return verb.noun == nullptr ? verb.name : std::string(verb.noun) + " " + verb.name;
}

static Words words_of(const std::vector<Choice>& choices) {
  Words words;
  for (const Choice& choice : choices) words.push_back(choice.word);
  return words;
}

static Words names_of(const Argument& argument) {
  Words names = {argument.name};
  if (argument.short_name != nullptr) names.emplace_back(argument.short_name);
  return names;
}

static bool takes_value(const Argument& argument) { return argument.is_option() && !argument.flag; }

static Words words_after(const std::string& noun) {
  Words words;
  for (const Verb& verb : verbs()) {
    bool belongs = verb.noun == nullptr ? noun.empty() : noun == verb.noun;
    if (belongs) words.emplace_back(verb.name);
  }
  if (noun.empty()) {
    for (const Noun& row : nouns()) words.emplace_back(row.name);
  }
  return words;
}

// Options that take the next word, as patterns.
static Words options_with_values() {
  Words patterns;
  for (const GlobalOption& option : GLOBAL_OPTIONS) {
    if (option.value != nullptr) patterns.push_back(std::string("*:") + option.name);
  }
  for (const Verb& verb : verbs()) {
    for (const Argument& argument : verb.arguments) {
      if (!takes_value(argument)) continue;
      for (const std::string& name : names_of(argument))
        patterns.push_back("'" + path_of(verb) + ":" + name + "'");
    }
  }
  return patterns;
}

// Where a word may be a part of the verb.
static Words open_paths() {
  Words patterns = {":*"};
  for (const Noun& noun : nouns()) patterns.push_back(std::string(noun.name) + ":*");
  return patterns;
}

// ---- bash ----

static Words options_and_choices(const Verb& verb) {
  Words words;
  for (const Argument& argument : verb.arguments) {
    if (argument.is_option()) {
      words.emplace_back(argument.name);
    } else {
      std::ranges::copy(words_of(argument.choices), std::back_inserter(words));
    }
  }
  if (verb.danger != nullptr) words.emplace_back("--yes");
  return words;
}

static void print_bash_values() {
  fmt::print("      *:--sim) words=$({} | cut -d' ' -f1) ;;\n", SCENARIOS);
  for (const GlobalOption& option : GLOBAL_OPTIONS) {
    if (!option.choices.empty())
      fmt::print("      *:{}) words='{}' ;;\n", option.name, joined(words_of(option.choices), " "));
  }
  for (const Verb& verb : verbs()) {
    for (const Argument& argument : verb.arguments) {
      if (takes_value(argument) && !argument.choices.empty())
        fmt::print("      '{}:{}') words='{}' ;;\n", path_of(verb), argument.name,
                   joined(words_of(argument.choices), " "));
    }
  }
}

// The words so far, and what may follow them.
static void print_bash_words() {
  fmt::print("    '') words='{}' ;;\n", joined(words_after(""), " "));
  for (const Noun& noun : nouns())
    fmt::print("    '{}') words='{}' ;;\n", noun.name, joined(words_after(noun.name), " "));
  for (const Verb& verb : verbs())
    fmt::print("    '{}') words='{}' ;;\n", path_of(verb), joined(options_and_choices(verb), " "));
}

static std::string global_words() {
  std::string words;
  for (const GlobalOption& option : GLOBAL_OPTIONS) words += std::string(" ") + option.name;
  return words + " --sim=";
}

// bash takes --option=value apart into three words, zsh does not.
static void print_bash() {
  fmt::print(
      "# bash completion of zopctl\n_zopctl() {{\n"
      "  local cur=\"${{COMP_WORDS[COMP_CWORD]}}\" path='' option='' prefix='' words='' word i\n"
      "  for ((i = 1; i < COMP_CWORD; i++)); do\n    word=\"${{COMP_WORDS[i]}}\"\n"
      "    if [[ $word == '=' ]]; then option=\"${{COMP_WORDS[i-1]}}\"; continue; fi\n"
      "    if [[ -n $option ]]; then option=''; continue; fi\n"
      "    case \"$path:$word\" in\n      {}) option=\"$word\" ;;\n      *:-*) ;;\n"
      "      {}) path=\"${{path:+$path }}$word\" ;;\n    esac\n  done\n"
      "  if [[ $cur == '=' ]]; then option=\"${{COMP_WORDS[COMP_CWORD-1]}}\"; cur=''; fi\n"
      "  if [[ $cur == --*=* ]]; then\n"
      "    option=\"${{cur%%=*}}\"; prefix=\"$option=\"; cur=\"${{cur#*=}}\"\n  fi\n"
      "  if [[ -n $option ]]; then\n    case \"$path:$option\" in\n",
      joined(options_with_values(), "|"), joined(open_paths(), "|"));
  print_bash_values();
  fmt::print(
      "    esac\n    COMPREPLY=($(compgen -P \"$prefix\" -W \"$words\" -- \"$cur\"))\n    return\n"
      "  fi\n  case \"$path\" in\n");
  print_bash_words();
  fmt::print(
      "  esac\n  COMPREPLY=($(compgen -W \"$words{}\" -- \"$cur\"))\n"
      "  [[ ${{COMPREPLY[0]}} == *= ]] && compopt -o nospace 2>/dev/null\n  return 0\n"
      "}}\ncomplete -o default -F _zopctl zopctl\n",
      global_words());
}

// zsh runs the same function in its emulation of bash completion.
static void print_zsh() {
  fmt::print("#compdef zopctl\nautoload -U +X bashcompinit && bashcompinit\n");
  print_bash();
}

// ---- fish ----

static std::string fish_quoted(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) {
    if (c == '\'' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "'";
}

// A word that may follow a path.
static void print_fish_word(const std::string& path, const std::string& word,
                            const std::string& help) {
  fmt::print("complete -c zopctl -n '__zopctl_at \"{}\"' -f -a {}{}{}\n", path, fish_quoted(word),
             help.empty() ? "" : " -d ", help.empty() ? "" : fish_quoted(help));
}

static std::string fish_value(bool value, const Words& choices) {
  if (!value) return "";
  return choices.empty() ? " -r -F" : " -x -a " + fish_quoted(joined(choices, " "));
}

static void print_fish_globals() {
  for (const GlobalOption& option : GLOBAL_OPTIONS) {
    fmt::print("complete -c zopctl -l {}{} -d {}\n", option.name + 2,
               fish_value(option.value != nullptr, words_of(option.choices)),
               fish_quoted(option.help));
  }
  fmt::print(
      "complete -c zopctl -n 'string match -q -- \"--sim=*\" (commandline -ct)' -f -a "
      "'--sim=({} | string replace -r \" +\" \\t)'\n",
      SCENARIOS);
}

static void print_fish_verb(const Verb& verb) {
  std::string path = path_of(verb);
  print_fish_word(verb.noun == nullptr ? "" : verb.noun, verb.name, verb.help);
  for (const Argument& argument : verb.arguments) {
    if (!argument.is_option()) {
      for (const auto& [word, meaning] : argument.choices) print_fish_word(path, word, meaning);
      continue;
    }
    std::string short_name =
        argument.short_name == nullptr ? "" : std::string(" -s ") + (argument.short_name + 1);
    fmt::print("complete -c zopctl -n '__zopctl_at \"{}\"' -l {}{}{} -d {}\n", path,
               argument.name + 2, short_name,
               fish_value(!argument.flag, words_of(argument.choices)), fish_quoted(argument.help));
  }
  if (verb.danger != nullptr)
    fmt::print("complete -c zopctl -n '__zopctl_at \"{}\"' -l yes -d confirm\n", path);
}

static Words fish_patterns(const Words& patterns) {
  Words quoted;
  for (const std::string& pattern : patterns)
    quoted.push_back(pattern.starts_with("'") ? pattern : "'" + pattern + "'");
  return quoted;
}

static void print_fish() {
  fmt::print(
      "# fish completion of zopctl\nfunction __zopctl_at\n  set -l path ''\n  set -l value no\n"
      "  for word in (commandline -opc)[2..-1]\n    if test $value = yes\n      set value no\n"
      "      continue\n    end\n    switch \"$path:$word\"\n      case {}\n        set value yes\n"
      "      case '*:-*'\n      case {}\n        set path (string trim -- \"$path $word\")\n"
      "    end\n  end\n  test \"$path\" = \"$argv\"\nend\n",
      joined(fish_patterns(options_with_values()), " "), joined(fish_patterns(open_paths()), " "));
  print_fish_globals();
  for (const Noun& noun : nouns()) print_fish_word("", noun.name, noun.help);
  for (const Verb& verb : verbs()) print_fish_verb(verb);
}

void print_completion(const std::string& shell) {
  if (shell == "bash") print_bash();
  if (shell == "zsh") print_zsh();
  if (shell == "fish") print_fish();
}

}  // namespace zopctl
