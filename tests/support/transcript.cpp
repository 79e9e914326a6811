#include "tests/support/transcript.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <vector>

namespace test {

namespace {
using Lines = std::vector<std::string>;

struct Section {
  std::string path, heading;
  int line;  // before its first one
  Lines lines;
};
}  // namespace

static Lines lines_of(std::istream&& in) {
  Lines lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

namespace {
// Gives a section's inputs to a session, and writes the section as it is now.
class Replay {
 public:
  explicit Replay(Session& session) : session_(session) {}

  Lines run(const Lines& lines) {
    now_.clear();
    for (const std::string& line : lines) take(line);
    end_input();
    return now_;
  }

 private:
  void take(const std::string& line) {
    constexpr std::string_view MASK = "# mask ";
    if (line.starts_with('|')) return;
    bool goes_on = line.starts_with("> ");
    if (!goes_on) end_input();
    now_.push_back(line);
    if (line.starts_with(MASK)) masks_.emplace_back(line.substr(MASK.size()));
    if (line.starts_with("$ ")) input_ = line.substr(2);
    if (goes_on) input_ += "\n" + line.substr(2);
  }
  void end_input() {
    if (input_.empty()) return;
    for (std::string& line : lines_of(std::istringstream(session_.answer(input_)))) {
      for (const std::regex& mask : masks_) line = std::regex_replace(line, mask, "*");
      now_.push_back(line.empty() ? "|" : "| " + line);
    }
    input_.clear();
  }

  Session& session_;
  std::vector<std::regex> masks_;
  std::string input_;
  Lines now_;
};
}  // namespace

static void rewrite(const Section& section, const Lines& now) {
  Lines lines = lines_of(std::ifstream(section.path));
  auto first = std::find(lines.begin(), lines.end(), section.heading);
  first = section.heading.empty() ? lines.begin() : first + 1;
  auto last = std::find_if(first, lines.end(), [](auto& line) { return line.starts_with("== "); });
  lines.insert(lines.erase(first, last), now.begin(), now.end());
  std::ofstream file(section.path);
  for (const std::string& line : lines) file << line << '\n';
}

// What differs first, and the input before it.
static std::string difference(const Section& section, const Lines& now) {
  auto [kept, is] = std::ranges::mismatch(section.lines, now);
  auto input = is;
  while (input != now.begin() && !(input - 1)->starts_with("$ ")) --input;
  auto line = [](const Lines& lines, auto at) { return at == lines.end() ? "nothing" : *at; };
  return section.path + ":" + std::to_string(section.line + 1 + (kept - section.lines.begin())) +
         "\n  " + (input != now.begin() ? *(input - 1) : section.heading) +
         "\n  should print: " + line(section.lines, kept) + "\n  but prints:   " + line(now, is);
}

namespace {
class Case : public testing::Test {
 public:
  Case(Section setup, Section section, NewSession new_session)
      : setup_(std::move(setup)),
        section_(std::move(section)),
        new_session_(std::move(new_session)) {}
  void TestBody() override {
    std::unique_ptr<Session> session = new_session_();
    Replay replay(*session);
    replay.run(setup_.lines);
    Lines now = replay.run(section_.lines);
    if (std::getenv("ZOP_REBUILD_GOLDEN") != nullptr) return rewrite(section_, now);
    if (now != section_.lines) ADD_FAILURE() << difference(section_, now);
  }

 private:
  Section setup_, section_;
  NewSession new_session_;
};
}  // namespace

// What stands before the first heading comes first.
static std::vector<Section> sections_of(const std::string& path) {
  std::vector<Section> sections = {{path, "", 0, {}}};
  int number = 0;
  for (const std::string& line : lines_of(std::ifstream(path))) {
    ++number;
    if (line.starts_with("== "))
      sections.push_back({path, line, number, {}});
    else
      sections.back().lines.push_back(line);
  }
  if (sections.size() == 1) sections.insert(sections.begin(), Section{path, "", 0, {}});
  return sections;
}

static std::string identifier(std::string text) {
  std::ranges::replace_if(
      text, [](unsigned char c) { return isalnum(c) == 0; }, '_');
  return text;
}

bool register_transcripts(const std::string& folder, const NewSession& new_session) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::string suite =
        std::filesystem::path(folder).filename().string() + "_" + identifier(entry.path().stem());
    std::vector<Section> sections = sections_of(entry.path());
    for (size_t i = 1; i < sections.size(); ++i) {
      const Section& section = sections[i];
      std::string name = section.heading.empty() ? "all" : identifier(section.heading.substr(3));
      testing::RegisterTest(
          suite.c_str(), name.c_str(), nullptr, nullptr, section.path.c_str(), section.line,
          [=, setup = sections[0]] { return new Case(setup, section, new_session); });
    }
  }
  return true;
}

}  // namespace test
