# SPDX-License-Identifier: MIT
# The versions that the sources state.
function(nnlib_stated_version result file name)
  file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/../${file} lines REGEX "define ${name}")
  string(REGEX MATCHALL "[0-9]+" numbers "${lines}")
  list(JOIN numbers . version)
  set(${result} ${version} PARENT_SCOPE)
endfunction()

nnlib_stated_version(NNLIB_VERSION core/ai_version.h NNLIB_VERSION_)
nnlib_stated_version(LCUT_VERSION lcut/lcut.h LCUT_VERSION)
