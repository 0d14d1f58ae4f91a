// SPDX-License-Identifier: MIT
#include "core/core_common.h"
#include "ports/port.h"
#include "test/test_lcut_main.h"

int main(int argc, char** argv) {
  port_init();
  core_init();
  return port_exit_status(test_lcut_main(argc, argv));
}
