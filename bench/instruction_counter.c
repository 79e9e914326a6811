/* A plugin of qemu-user: counts the instructions and memory accesses of a program, and prints both
 * when it ends.
 *
 * Debian's qemu has no header for plugins: what is used of the interface, version 1, is declared
 * here. */
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#define EXPORTED __attribute__((visibility("default")))

struct qemu_plugin_tb;
struct qemu_plugin_insn;
enum { ADD_U64 = 0, READS_AND_WRITES = 3 };

void qemu_plugin_register_vcpu_tb_trans_cb(uint64_t id,
                                           void (*translated)(uint64_t, struct qemu_plugin_tb*));
void qemu_plugin_register_atexit_cb(uint64_t id, void (*ended)(uint64_t, void*), void* argument);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb* block);
struct qemu_plugin_insn* qemu_plugin_tb_get_insn(const struct qemu_plugin_tb* block, size_t index);
void qemu_plugin_register_vcpu_insn_exec_inline(struct qemu_plugin_insn* instruction, int operation,
                                                void* counter, uint64_t step);
void qemu_plugin_register_vcpu_mem_inline(struct qemu_plugin_insn* instruction, int accesses,
                                          int operation, void* counter, uint64_t step);

EXPORTED int qemu_plugin_version = 1;

static uint64_t instructions = 0;
static uint64_t accesses = 0;

static void count_in(uint64_t id, struct qemu_plugin_tb* block) {
  (void)id;
  for (size_t i = 0; i < qemu_plugin_tb_n_insns(block); ++i) {
    struct qemu_plugin_insn* instruction = qemu_plugin_tb_get_insn(block, i);
    qemu_plugin_register_vcpu_insn_exec_inline(instruction, ADD_U64, &instructions, 1);
    qemu_plugin_register_vcpu_mem_inline(instruction, READS_AND_WRITES, ADD_U64, &accesses, 1);
  }
}

static void print_counts(uint64_t id, void* argument) {
  (void)id;
  (void)argument;
  fprintf(stderr, "counted %llu %llu\n", (unsigned long long)instructions,
          (unsigned long long)accesses);
}

EXPORTED int qemu_plugin_install(uint64_t id, const void* info, int count, char** arguments) {
  (void)info;
  (void)count;
  (void)arguments;
  qemu_plugin_register_vcpu_tb_trans_cb(id, count_in);
  qemu_plugin_register_atexit_cb(id, print_counts, NULL);
  return 0;
}
