// The texts are those of fleet/questions/.
#include "fleet/questions.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "fleet/question_texts.h"

namespace fleet {

static Question question_of(const char* name, std::string_view text) {
  constexpr std::string_view COMMENT = "-- ";
  Question question = {name, "", ""};
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (line.starts_with(COMMENT)) {
      question.meaning += question.meaning.empty() ? "" : " ";
      question.meaning += line.substr(COMMENT.size());
    } else {
      question.sql.append(line) += '\n';
    }
  }
  return question;
}

const std::vector<Question>& questions() {
  static const std::vector<Question> all = [] {
    std::vector<Question> made;
    for (const auto& [name, text] : QUESTION_TEXTS) made.push_back(question_of(name, text));
    return made;
  }();
  return all;
}

const Question* find_question(const std::string& name) {
  auto found = std::ranges::find(questions(), name, &Question::name);
  return found == questions().end() ? nullptr : &*found;
}

int64_t newest_time(Store& store) {
  Ask all;
  all.until = std::numeric_limits<uint32_t>::max();
  Answer answer = store.ask("SELECT max(time) AS last_time FROM report", all);
  return answer.rows.empty() ? 0 : answer.rows[0][0].number;
}

Answer answer_of(Store& store, const Question& question, const Ask& values) {
  Answer answer = store.ask(question.sql + fmt::format("LIMIT {}", values.rows + 1), values);
  auto most = static_cast<size_t>(values.rows);
  answer.is_cut = answer.rows.size() > most;
  if (answer.is_cut) answer.rows.resize(most);
  return answer;
}

}  // namespace fleet
