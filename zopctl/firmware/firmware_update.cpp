// zopctl firmware update and finish.
#include <fmt/format.h>

#include "zopctl/firmware/firmware.h"
#include "zopctl/firmware/update.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/failure.h"

namespace zopctl {

static ImageSet good_images(const std::string& folder) {
  ImageSet set = read_image_set(folder);
  if (set.is_good()) return set;
  throw Failure(folder + ": " + set.problems(), 1,
                "the modem was not touched; zopctl firmware info shows each file");
}

// What an update would send, in order.
static std::vector<Item> plan(const ImageSet& set, const Update::Options& options) {
  std::vector<Item> items;
  for (const ImageFile& file : set.files) {
    bool sent = !options.modem_only || !file.is_boot_loader;
    std::string what = sent ? fmt::format("{:>10}  {}", size_text(file.size), file.role)
                            : "not sent with --modem-only";
    items.push_back(shown(file.name, file.name, sent ? file.size : 0, what));
  }
  const char* erase = options.erase ? "the modem's file system, in any case"
                      : options.modem_only
                          ? "never"
                          : "the modem's file system, if its partition table is not the set's";
  items.push_back(shown("erase", "Erased", !options.modem_only, erase));
  uint64_t all = set.bytes_to_send(options.modem_only);
  items.push_back(shown("bytes", "Sent in all", all, size_text(all)));
  return items;
}

// Programs get events, as from an update.
static Findings show_plan(const ImageSet& set, const Update::Options& options) {
  if (!options.json)
    return one_section("dry_run", "An update would send, the modem was not touched",
                       plan(set, options));
  Progress progress(stdout, Progress::EVENTS);
  Progress::Json files = Progress::Json::array();
  for (const ImageFile& file : set.files) {
    bool sent = !options.modem_only || !file.is_boot_loader;
    if (sent) files.push_back({{"file", file.name}, {"size_bytes", file.size}});
  }
  progress.event("dry_run", {{"files", files},
                             {"erase", !options.modem_only},
                             {"total_bytes", set.bytes_to_send(options.modem_only)}});
  progress.event("end", {{"result", "done"}});
  return {};
}

// A modem whose update broke off may be restarting.
static void require_device(bool has_begun) {
  constexpr int DEVICE_BACK_S = 60;
  for (int waited = 0; has_begun && waited < DEVICE_BACK_S; ++waited) {
    if (std::filesystem::exists(mapped_device())) break;
    wait_seconds(1);
  }
  if (auto problem = device_problem(mapped_device())) throw Failure(*problem);
}

static void check_update(const Arguments& arguments) {
  if (arguments.has("--modem-only") && arguments.has("--erase"))
    throw UsageError("--modem-only never erases; leave out one of --modem-only and --erase");
}

static Findings update(const ModuleLibrary& module, const Arguments& arguments) {
  Update::Options options = {arguments.has("--modem-only"), arguments.has("--erase"),
                             arguments.json, arguments.yes};
  ImageSet set = good_images(arguments.text("DIR"));
  if (arguments.has("--dry-run")) return show_plan(set, options);
  require_device(Journal(mapped_device()).entry().has_value());
  Update(module, set, options).run();
  return {};
}

static Findings finish(const ModuleLibrary& module, const Arguments& arguments) {
  Journal journal(mapped_device());
  if (!journal.entry())
    throw Failure("no update of the modem at " + mapped_device() + " is waiting to be finished", 1,
                  "zopctl firmware update begins one");
  const JournalEntry& begun = *journal.entry();
  if (begun.only_switched)
    throw Failure(in_words(begun), NOT_CHANGED,
                  "run zopctl firmware update " + begun.images + " again");
  if (!begun.is_written)
    throw Failure(in_words(begun), NO_FIRMWARE,
                  "run zopctl firmware update " + begun.images + " again");
  require_device(true);
  ImageSet set;
  set.folder = begun.images;
  set.version = begun.new_version;
  set.has_version_info = begun.has_version_info;
  Update(module, set, {.json = arguments.json}).finish();
  return {};
}

const Verb FIRMWARE_UPDATE = {
    .noun = "firmware",
    .name = "update",
    .help = "write an image set to the modem",
    .need = Session::PORT,
    .danger = "a modem whose update fails has no firmware until an update succeeds",
    .events = true,
    .arguments = {{.name = "DIR", .help = "folder of the image set"},
                  {.name = "--modem-only",
                   .help = "write only the firmware, never the boot loaders, and erase nothing",
                   .flag = true},
                  {.name = "--erase",
                   .help = "erase the modem's file system and write all images",
                   .flag = true},
                  {.name = "--dry-run",
                   .help = "only check the images and show what would be sent",
                   .flag = true}},
    .check = check_update,
    .run = update};

const Verb FIRMWARE_FINISH = {
    .noun = "firmware",
    .name = "finish",
    .help = "do the end of an update whose images are written: NV items and version",
    .need = Session::PORT,
    .danger = "the end of an update rebuilds and restores the modem's NV items",
    .events = true,
    .run = finish};

}  // namespace zopctl
