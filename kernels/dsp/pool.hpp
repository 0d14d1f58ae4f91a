// SPDX-License-Identifier: MIT
#include "kernels/scalar/pool.hpp"
