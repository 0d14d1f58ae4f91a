# SPDX-License-Identifier: MIT
# nnlib_import(target MODEL file [NAME name] [CALIBRATE data.npy...] [OPTIONS option...])
#
# Adds a network to the target: name.c and name.h (name: the model file's, unless given) are written
# when the target is built, by nnlib-import with the options, and again when the model changes. With
# calibration data by nnlib-import quantize.
function(nnlib_import target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "MODEL;NAME" "CALIBRATE;OPTIONS")
  if(NOT arg_MODEL)
    message(FATAL_ERROR "nnlib_import: MODEL is missing")
  endif()
  cmake_path(ABSOLUTE_PATH arg_MODEL BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
  if(NOT arg_NAME)
    cmake_path(GET arg_MODEL STEM arg_NAME)
    string(MAKE_C_IDENTIFIER ${arg_NAME} arg_NAME)
  endif()
  if(TARGET nnlib-import)
    set(tool $<TARGET_FILE:nnlib-import>)
    set(tool_dependency nnlib-import)
  else()
    find_program(NNLIB_IMPORT nnlib-import HINTS ${nnlib_tools_dir} REQUIRED)
    set(tool ${NNLIB_IMPORT})
    set(tool_dependency ${NNLIB_IMPORT})
  endif()
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${target}_networks)
  set(files ${folder}/${arg_NAME}.c ${folder}/${arg_NAME}.h)
  if("separate" IN_LIST arg_OPTIONS OR "--weights=separate" IN_LIST arg_OPTIONS)
    list(APPEND files ${folder}/${arg_NAME}_weights.c ${folder}/${arg_NAME}_weights.h)
  endif()
  set(command convert)
  foreach(data IN LISTS arg_CALIBRATE)
    cmake_path(ABSOLUTE_PATH data BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
    list(APPEND calibration --calibrate ${data})
    list(APPEND data_files ${data})
    set(command quantize)
  endforeach()
  add_custom_command(OUTPUT ${files}
    COMMAND ${tool} ${command} ${arg_MODEL} -o ${folder} --name ${arg_NAME} ${calibration}
            ${arg_OPTIONS}
    DEPENDS ${arg_MODEL} ${data_files} ${tool_dependency} VERBATIM)
  target_sources(${target} PRIVATE ${files})
  target_include_directories(${target} PRIVATE ${folder})
  target_link_libraries(${target} PRIVATE nnlib::nnlib)
endfunction()
