// Only members of objects are merged. Deeper ones than a report has are replaced as a whole: a file
// may nest them without end.
#include "records/changes.h"

namespace records {

constexpr int WHOLE_EVERY = 60;  // lines
constexpr int DEPTH = 4;         // of a sample: report, section, item, its members

// ---- writing ----

static Json changes_of(const Json& before, const Json& now, int depth) {
  Json changes = Json::object();
  for (const auto& [name, value] : now.items()) {
    const Json& old = member_of(before, name.c_str());
    bool merges = depth > 1 && value.is_object() && old.is_object();
    if (value != old) changes[name] = merges ? changes_of(old, value, depth - 1) : value;
  }
  for (const auto& [name, old] : before.items()) {
    if (!old.is_null() && !now.contains(name)) changes[name] = nullptr;
  }
  return changes;
}

Json ChangeWriter::line_of(const Json& sample) {
  Json line = Json::object();
  if (number_ == 0) {
    line["format"] = RECORDING_FORMAT;
    line.update(sample);
  } else {
    line["change"] = number_;
    line.update(changes_of(last_, sample, DEPTH));
  }
  number_ = (number_ + 1) % WHOLE_EVERY;
  last_ = sample;
  last_["time"] = nullptr;
  last_["events"] = Json::array();
  return line;
}

// ---- reading ----

static void merge(Json& into, Json& changes, int depth) {
  for (auto& [name, value] : changes.items()) {
    Json& old = into[name];
    if (depth > 1 && value.is_object() && old.is_object()) {
      merge(old, value, depth - 1);
    } else {
      old = std::move(value);
    }
  }
}

const Json* ChangeReader::sample_of(Json line) {
  if (!is_change(line)) {
    sample_ = std::move(line);
    next_ = 1;
    return &sample_;
  }
  bool fits = next_ > 0 && line["change"] == next_;
  next_ = fits ? next_ + 1 : -1;
  if (!fits) return nullptr;
  sample_["time"] = nullptr;
  sample_["events"] = nullptr;
  merge(sample_, line, DEPTH);
  return &sample_;
}

}  // namespace records
