// zopctl firmware info: checks an image set file by file.
#include "zopctl/firmware/firmware.h"

#include <fmt/format.h>

#include "zopctl/firmware/image_set.h"
#include "zopctl/firmware/progress.h"
#include "zopctl/text/bytes_text.h"

namespace zopctl {

static Item item_of(const ImageFile& file) {
  if (!file.problem.empty()) return {file.name, file.name, nullptr, file.problem, true};
  return shown(file.name.c_str(), file.name.c_str(), file.size,
               fmt::format("{:>10}  {}", size_text(file.size), file.role));
}

static Findings info(const ModuleLibrary&, const Arguments& arguments) {
  ImageSet set = read_image_set(arguments.text("DIR"));
  Section about{"image_set", "Image set", {}};
  if (set.folder_problem.empty()) {
    about.items.push_back(shown("folder", "Folder", set.folder, set.folder));
  } else {
    about.items.push_back({"folder", "Folder", nullptr, set.folder_problem, true});
    return {about};
  }
  Item version = shown("version", "Version", set.version, set.version);
  if (!set.has_version_info) {
    version = {"version", "Version", nullptr,
               "no version_info: the modem's NV items are left as they are", false};
  }
  about.items.push_back(version);
  Section files{"files", "Files", {}};
  for (const ImageFile& file : set.files) files.items.push_back(item_of(file));
  if (!set.is_good()) return {about, files};
  uint64_t all = set.bytes_to_send(false), modem_only = set.bytes_to_send(true);
  Section sent{"sent", "Sent to the modem", {}};
  sent.items.push_back(shown("all", "By an update", all, size_text(all)));
  sent.items.push_back(shown("modem_only", "With --modem-only", modem_only, size_text(modem_only)));
  return {about, files, sent};
}

const Verb FIRMWARE_INFO = {.noun = "firmware",
                            .name = "info",
                            .help = "check an image set, without a modem",
                            .need = Session::LIBRARY,
                            .arguments = {{.name = "DIR", .help = "folder of the image set"}},
                            .run = info};

}  // namespace zopctl
