#include "tests/support/transcript.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace test {

namespace {
using Lines = std::vector<std::string>;

struct Section {
  std::string path, heading;
  int line;  // of the heading
  Lines lines;
};
}  // namespace

static Lines lines_of(const std::string& path) {
  std::ifstream file(path);
  Lines lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

// Runs the commands, and returns the lines with what they print now.
static Lines replayed(Session& session, const Lines& lines) {
  Lines result;
  for (const std::string& line : lines) {
    bool is_command = line.starts_with("> ");
    if (is_command || line.empty() || line[0] == '#') result.push_back(line);
    if (!is_command) continue;
    for (const Words& command : word_groups(line.substr(2), ";")) {
      std::istringstream printed(session.run(command));
      for (std::string text; std::getline(printed, text);) result.push_back(text);
    }
  }
  return result;
}

static void rewrite(const Section& section, const Lines& now) {
  Lines lines = lines_of(section.path);
  auto first = std::find(lines.begin(), lines.end(), "== " + section.heading) + 1;
  auto last = std::find_if(first, lines.end(), [](auto& line) { return line.starts_with("== "); });
  lines.insert(lines.erase(first, last), now.begin(), now.end());
  std::ofstream file(section.path);
  for (const std::string& line : lines) file << line << '\n';
}

// What differs first, and after which command.
static std::string difference(const Section& section, const Lines& now) {
  auto [kept, is] =
      std::mismatch(section.lines.begin(), section.lines.end(), now.begin(), now.end());
  auto command = is;
  while (command != now.begin() && !(command - 1)->starts_with("> ")) --command;
  auto line = [](const Lines& lines, auto at) { return at == lines.end() ? "nothing" : *at; };
  return section.path + ":" + std::to_string(section.line + 1 + (kept - section.lines.begin())) +
         "\n  " + (command != now.begin() ? *(command - 1) : section.heading) +
         "\n  should print: " + line(section.lines, kept) + "\n  but prints:   " + line(now, is);
}

namespace {
class Case : public testing::Test {
 public:
  Case(Section setup, Section section, NewSession new_session)
      : setup_(std::move(setup)), section_(std::move(section)), new_session_(new_session) {}
  void TestBody() override {
    std::unique_ptr<Session> session = new_session_();
    replayed(*session, setup_.lines);
    Lines now = replayed(*session, section_.lines);
    if (std::getenv("ZOP_REBUILD_GOLDEN") != nullptr) return rewrite(section_, now);
    if (now != section_.lines) ADD_FAILURE() << difference(section_, now);
  }

 private:
  Section setup_, section_;
  NewSession new_session_;
};
}  // namespace

static std::vector<Section> sections_of(const std::string& path) {
  std::vector<Section> sections = {{path, "", 0, {}}};
  int number = 0;
  for (const std::string& line : lines_of(path)) {
    ++number;
    if (line.starts_with("== "))
      sections.push_back({path, line.substr(3), number, {}});
    else
      sections.back().lines.push_back(line);
  }
  return sections;
}

static std::string name_of(std::string heading) {
  std::replace_if(
      heading.begin(), heading.end(), [](char c) { return !isalnum(c); }, '_');
  return heading;
}

bool register_transcripts(const std::string& folder, NewSession new_session) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::vector<Section> sections = sections_of(entry.path());
    for (size_t i = 1; i < sections.size(); ++i) {
      const Section& section = sections[i];
      testing::RegisterTest(entry.path().stem().c_str(), name_of(section.heading).c_str(), nullptr,
                            nullptr, section.path.c_str(), section.line, [=, setup = sections[0]] {
                              return new Case(setup, section, new_session);
                            });
    }
  }
  return true;
}

}  // namespace test
