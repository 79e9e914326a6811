// zopctl firmware info and seal: check an image set file by file, and seal one that is good.
#include "zopctl/firmware/firmware.h"

#include <fmt/format.h>

#include "zopctl/firmware/image_header.h"
#include "zopctl/firmware/image_set.h"
#include "zopctl/firmware/seal.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/counted.h"
#include "zopctl/text/failure.h"

namespace zopctl {

// For people a line each.
static Item item_of(const ImageFile& file) {
  if (!file.problem.empty()) return {file.name, file.name, nullptr, file.problem, true};
  return shown(file.name.c_str(), file.name.c_str(), file.size,
               fmt::format("{:>10}  {}", size_text(file.size), file.role));
}

static Item version_of(const ImageSet& set) {
  if (set.has_version_info) return shown("version", "Version", set.version, set.version);
  return {"version", "Version", nullptr,
          "no version_info: the modem's NV items are left as they are", false};
}

static Item seal_of(const ImageSet& set) {
  if (set.seal == ImageSet::NONE) return shown("sealed", "Seal", false, "not sealed");
  if (set.seal == ImageSet::WHOLE)
    return shown("sealed", "Seal", true, "unchanged since it was sealed");
  return {"sealed", "Seal", nullptr, "broken, see the files", true};
}

static Section about(const ImageSet& set) {
  Section section{"image_set", "Image set", {}};
  if (!set.folder_problem.empty()) {
    section.items.push_back({"folder", "Folder", nullptr, set.folder_problem, true});
    return section;
  }
  section.items = {shown("folder", "Folder", set.folder, set.folder), version_of(set),
                   seal_of(set)};
  std::string notes = set.notes.empty() ? "none" : fmt::format("{}", fmt::join(set.notes, "; "));
  section.items.push_back(shown("notes", "Notes", set.notes, notes));
  return section;
}

static Section headers_of(const ImageSet& set) {
  Section section{"headers", "Headers", {}};
  for (const ImageFile& file : set.files) {
    if (file.header.empty()) continue;
    bool known = file.header != UNKNOWN_HEADER;
    section.items.push_back(shown(file.name.c_str(), file.name.c_str(), file.header,
                                  known ? file.header : "unknown, so not checked"));
  }
  return section;
}

static nlohmann::ordered_json known(const std::string& text) {
  return text.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(text);
}

// For programs a list.
static Item list_of(const ImageSet& set) {
  Item list = shown("files", "Files", nlohmann::ordered_json::array(), "");
  for (const ImageFile& file : set.files) {
    bool good = file.problem.empty();
    list.value.push_back({{"file", file.name},
                          {"role", file.role},
                          {"size_bytes", nullptr},
                          {"header", known(file.header)},
                          {"problem", known(file.problem)}});
    if (good) list.value.back()["size_bytes"] = file.size;
    list.failed = list.failed || !good;
  }
  return list;
}

static Section sent_of(const ImageSet& set) {
  uint64_t all = set.bytes_to_send(false), modem_only = set.bytes_to_send(true);
  return {"sent",
          "Sent to the modem",
          {shown("all_bytes", "By an update", all, size_text(all)),
           shown("modem_only_bytes", "With --modem-only", modem_only, size_text(modem_only))}};
}

static void add_tables(const ImageSet& set, Findings& findings) {
  Section files{"files", "Files", {}};
  for (const ImageFile& file : set.files) files.items.push_back(item_of(file));
  findings.push_back(files);
  Section headers = headers_of(set);
  if (!headers.items.empty()) findings.push_back(headers);
}

static Findings info(const Arguments& arguments) {
  ImageSet set = read_image_set(arguments.text("DIR"));
  Findings findings = {about(set)};
  if (!set.folder_problem.empty()) return findings;
  if (arguments.json) {
    findings.front().items.push_back(list_of(set));
  } else {
    add_tables(set, findings);
  }
  if (set.is_good()) findings.push_back(sent_of(set));
  return findings;
}

static Findings seal(const Arguments& arguments) {
  ImageSet set = read_image_set(arguments.text("DIR"));
  if (!set.is_good()) {
    std::string text = fmt::format("{}: {}; not sealed", set.folder, set.problems());
    if (set.seal == ImageSet::BROKEN)
      text += fmt::format("; if the set is as it should be, remove {} first", SEAL_FILE);
    throw Failure(text);
  }
  std::vector<std::string> names;
  for (const ImageFile& file : set.files) names.push_back(file.name);
  if (set.has_version_info) names.emplace_back("version_info");
  write_sums(set.folder, names);
  return confirmation("seal", "Image set",
                      fmt::format("{} lists {}", SEAL_FILE, counted(names.size(), "file")));
}

const Verb FIRMWARE_INFO = {.noun = "firmware",
                            .name = "info",
                            .help = "check an image set, without a modem",
                            .arguments = {{.name = "DIR", .help = "folder of the image set"}},
                            .run_alone = info};

const Verb FIRMWARE_SEAL = {
    .noun = "firmware",
    .name = "seal",
    .help = "record the SHA-256 of a good image set, so that info and update see later changes",
    .arguments = {{.name = "DIR", .help = "folder of the image set"}},
    .run_alone = seal};

}  // namespace zopctl
