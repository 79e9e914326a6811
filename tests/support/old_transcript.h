// Transcripts: files of inputs and of what came of them, which a person can review.
//   $ an input
//   > its next line
//   | a line of the output
// All other lines are comments; "# mask REGEX" hides what differs from run to run in the outputs
// that follow. ZOP_REBUILD_GOLDEN=1 writes the outputs anew: review the difference.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

class Transcript {
 public:
  using Answer = std::function<std::string(const std::string& input)>;

  // Gives each input to answer, and compares what it returns with the output in the file.
  static void replay(const std::string& path, const Answer& answer) {
    std::ifstream file(path);
    EXPECT_TRUE(file) << path;
    Transcript transcript(path, answer);
    for (std::string line; std::getline(file, line);) transcript.take(line);
    ++transcript.number_;
    transcript.end_step();
    if (std::getenv("ZOP_REBUILD_GOLDEN") != nullptr) std::ofstream(path) << transcript.written_;
  }

 private:
  Transcript(const std::string& path, const Answer& answer) : path_(path), answer_(answer) {}

  void take(const std::string& line) {
    constexpr std::string_view MASK = "# mask ";
    ++number_;
    if (line.starts_with("|")) {
      expected_.push_back(line.size() > 2 ? line.substr(2) : "");
      return;
    }
    bool goes_on = line.starts_with("> ");
    if (!goes_on) end_step();
    written_ += line + "\n";
    if (line.starts_with(MASK)) masks_.emplace_back(line.substr(MASK.size()));
    if (line.starts_with("$ ")) input_ = line.substr(2);
    if (goes_on) input_ += "\n" + line.substr(2);
  }

  void end_step() {
    if (input_.empty()) return;
    std::vector<std::string> output = lines_of(masked(answer_(input_)));
    bool rebuilds = std::getenv("ZOP_REBUILD_GOLDEN") != nullptr;
    if (!rebuilds && output != expected_) report_difference(output);
    for (const std::string& line : output) written_ += quoted(line) + "\n";
    input_.clear();
    expected_.clear();
  }

  // The first line that differs, and its place in the file.
  void report_difference(const std::vector<std::string>& output) const {
    auto [got, wanted] = std::ranges::mismatch(output, expected_);
    auto place = number_ - (expected_.end() - wanted);
    ADD_FAILURE() << path_ << ":" << place << ": other output of\n$ " << input_
                  << "\nhere:     " << (got == output.end() ? "no more lines" : *got)
                  << "\nexpected: " << (wanted == expected_.end() ? "no more lines" : *wanted);
  }

  std::string masked(std::string text) const {
    for (const std::regex& mask : masks_) text = std::regex_replace(text, mask, "*");
    return text;
  }
  static std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream source(text);
    for (std::string line; std::getline(source, line);) lines.push_back(line);
    return lines;
  }
  static std::string quoted(const std::string& line) { return line.empty() ? "|" : "| " + line; }

  std::string path_;
  Answer answer_;
  std::vector<std::regex> masks_;
  long number_ = 0;  // of the line in the file
  std::string input_;
  std::vector<std::string> expected_;
  std::string written_;  // the transcript as it is now
};
