/* SPDX-License-Identifier: MIT */
/* QEMU plugin (interface version 1, QEMU 7): counts the guest instructions from the address "begin"
 * up to the address "end", exactly, and writes one line for each such region.
 *
 *   gcc -O2 -shared -fPIC -o region_counter.so region_counter.c
 *   qemu-... -plugin ./region_counter.so,begin=0xADDRESS,end=0xADDRESS -d plugin -D counts.txt ...
 */
#include <inttypes.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* The part of the interface that is needed; Debian has no package of its header. */
typedef uint64_t qemu_plugin_id_t;
struct qemu_plugin_tb;
struct qemu_plugin_insn;
struct qemu_info_t;
enum { QEMU_PLUGIN_INLINE_ADD_U64 = 0, QEMU_PLUGIN_CB_NO_REGS = 0 };
void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t,
                                           void (*)(qemu_plugin_id_t, struct qemu_plugin_tb*));
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb*);
struct qemu_plugin_insn* qemu_plugin_tb_get_insn(const struct qemu_plugin_tb*, size_t);
uint64_t qemu_plugin_insn_vaddr(const struct qemu_plugin_insn*);
void qemu_plugin_register_vcpu_insn_exec_inline(struct qemu_plugin_insn*, int, void*, uint64_t);
void qemu_plugin_register_vcpu_insn_exec_cb(struct qemu_plugin_insn*, void (*)(unsigned, void*),
                                            int, void*);
void qemu_plugin_outs(const char*);

#define EXPORT __attribute__((visibility("default")))
EXPORT int qemu_plugin_version = 1;
EXPORT int qemu_plugin_install(qemu_plugin_id_t id, const struct qemu_info_t* info, int argc,
                               char** argv);

static uint64_t executed;
static uint64_t executed_at_begin;
static uint64_t begin_address = UINT64_MAX;
static uint64_t end_address = UINT64_MAX;

static void on_begin(unsigned cpu, void* data) {
  (void)cpu;
  (void)data;
  executed_at_begin = executed;
}

static void on_end(unsigned cpu, void* data) {
  char line[32];
  (void)cpu;
  (void)data;
  snprintf(line, sizeof line, "%" PRIu64 "\n", executed - executed_at_begin);
  qemu_plugin_outs(line);
}

static void translate(qemu_plugin_id_t id, struct qemu_plugin_tb* block) {
  (void)id;
  for (size_t i = 0; i < qemu_plugin_tb_n_insns(block); ++i) {
    struct qemu_plugin_insn* insn = qemu_plugin_tb_get_insn(block, i);
    const uint64_t address = qemu_plugin_insn_vaddr(insn);
    if (address == begin_address) {
      qemu_plugin_register_vcpu_insn_exec_cb(insn, on_begin, QEMU_PLUGIN_CB_NO_REGS, NULL);
    }
    if (address == end_address) {
      qemu_plugin_register_vcpu_insn_exec_cb(insn, on_end, QEMU_PLUGIN_CB_NO_REGS, NULL);
    }
    qemu_plugin_register_vcpu_insn_exec_inline(insn, QEMU_PLUGIN_INLINE_ADD_U64, &executed, 1);
  }
}

int qemu_plugin_install(qemu_plugin_id_t id, const struct qemu_info_t* info, int argc,
                        char** argv) {
  (void)info;
  for (int i = 0; i < argc; ++i) {
    if (strncmp(argv[i], "begin=", 6) == 0) {
      begin_address = strtoull(argv[i] + 6, NULL, 0);
    } else if (strncmp(argv[i], "end=", 4) == 0) {
      end_address = strtoull(argv[i] + 4, NULL, 0);
    } else {
      return -1;
    }
  }
  qemu_plugin_register_vcpu_tb_trans_cb(id, translate);
  return 0;
}
