// SPDX-License-Identifier: MIT
#include "kernels/scalar/add.hpp"
