#!/bin/sh
# Static checks by cppcheck.
set -e

check() {
  cppcheck --quiet -j "$(nproc)" --std=c++20 --language=c++ --inline-suppr --error-exitcode=1 \
    --suppress=missingIncludeSystem "-DNLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(...)=" -I. \
    --file-list=- "$@"
}
# In the module style counts too, except for the advice to use algorithms instead of loops.
git ls-files 'core/*.cpp' 'link/*.cpp' 'commands/*.cpp' 'report/*.cpp' 'module/*.cpp' \
  'download/*.cpp' | check --enable=warning,performance,portability,style --suppress=useStlAlgorithm
git ls-files 'simulator/*.cpp' 'records/*.cpp' 'page/*.cpp' 'fleet/*.cpp' 'zopctl/*.cpp' |
  check --enable=warning,performance,portability
echo "cppcheck: clean"
