# SPDX-License-Identifier: MIT
# The types that integer layers and conversions take: fixed point, and of integers the types words of
# kernels' names. A product that knows its own leaves out the code of others (docs/quantization.md).
set(all_types fixed uint8 int8symwt int8_int8symwt)
set(NNLIB_QUANTIZED_TYPES "${all_types}" CACHE STRING
    "Types that integer layers and conversions take")
foreach(types ${NNLIB_QUANTIZED_TYPES})
  if(NOT types IN_LIST all_types)
    message(FATAL_ERROR "NNLIB_QUANTIZED_TYPES: no types ${types}; there are ${all_types}")
  endif()
endforeach()
list(JOIN NNLIB_QUANTIZED_TYPES "," quantized_types)
set(left_out_types ${all_types})
list(REMOVE_ITEM left_out_types ${NNLIB_QUANTIZED_TYPES} "")
