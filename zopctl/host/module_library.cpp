// Loads the module with dlopen. It is never unloaded: a signal handler of it may stay installed.
// All names are bound at once: a library of another version is refused with the name that it lacks.
#include "zopctl/host/module_library.h"

#include <dlfcn.h>

#include <filesystem>

#include "zopctl/text/failure.h"

namespace zopctl {

namespace fs = std::filesystem;

static constexpr char SONAME[] = "libzop_module.so.0";

static std::string usual_path() {
  fs::path beside = fs::read_symlink("/proc/self/exe").parent_path() / SONAME;
  return fs::exists(beside) ? beside.string() : SONAME;
}

ModuleLibrary::ModuleLibrary(const std::string& path)
    : handle_(dlopen((path.empty() ? usual_path() : path).c_str(), RTLD_NOW | RTLD_LOCAL)) {}

void* ModuleLibrary::symbol(const char* name) const {
  if (handle_ == nullptr)
    throw Failure(std::string("can't load the module: ") + dlerror(), 1,
                  "--library names another file");
  void* found = dlsym(handle_, name);
  if (found == nullptr) {
    throw Failure(std::string("the module lacks ") + name + "; is it of this version?");
  }
  return found;
}

}  // namespace zopctl
