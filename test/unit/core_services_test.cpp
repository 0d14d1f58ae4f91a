// SPDX-License-Identifier: MIT
// The core services against models, and with memory that is not theirs or runs out.
// Linked with --wrap=malloc, --wrap=realloc and --wrap=free, so that the heap can be exhausted and
// released memory looked at.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <random>
#include <vector>

#include "core/ai_declare.h"
#include "core/core_mem_manager.h"
#include "core/core_ring_buffer.h"
#include "core/core_utils.h"

namespace {
bool g_exhausted = false;
bool g_keep = false;  // the next block that is released, as it is
void* g_kept = nullptr;
}  // namespace

extern "C" void* __real_malloc(size_t size);
extern "C" void* __real_realloc(void* p, size_t size);
extern "C" void __real_free(void* p);
extern "C" void* __wrap_malloc(size_t size) {
  return g_exhausted || size > SIZE_MAX / 4 ? nullptr : __real_malloc(size);
}
extern "C" void __wrap_free(void* p) {
  if (g_keep) {
    g_keep = false;
    g_kept = p;
  } else {
    __real_free(p);
  }
}
extern "C" void* __wrap_realloc(void* p, size_t size) {
  if (g_keep) {  // moved, the old block of eight words
    g_keep = false;
    g_kept = p;
    return std::memcpy(__real_malloc(size), p, 8 * sizeof(void*));
  }
  return g_exhausted || size > SIZE_MAX / 4 ? nullptr : __real_realloc(p, size);
}

namespace {

using Element = std::vector<uint8_t>;

// A ring buffer beside the plain queue that it stands for.
struct Queues {
  Queues(uint16_t capacity, uint16_t stride, uint16_t start) {
    EXPECT_EQ(core_ring_buffer_init(&ring, capacity, stride, nullptr), uint32_t{capacity} * stride);
    std::memset(ring.data, 0x77, uint32_t{capacity} * stride);
    ring.read = ring.write = start;  // so that few steps reach the wrap
  }
  ~Queues() { EXPECT_EQ(core_ring_buffer_destroy(&ring), 1u); }

  Element at(const void* address) const {
    const uint8_t* bytes = static_cast<const uint8_t*>(address);
    return Element(bytes, bytes + ring.stride);
  }
  uint8_t* slot(uint32_t index) const {
    return static_cast<uint8_t*>(ring.data) + index % ring.capacity * ring.stride;
  }
  bool full() const { return queue.size() == ring.capacity; }

  void push(const uint8_t* elem, bool force) {
    const Element stored = at(elem != nullptr ? elem : slot(ring.write));
    const uint32_t pushed =
        force ? core_ring_buffer_push_force(&ring, elem) : core_ring_buffer_push(&ring, elem);
    ASSERT_EQ(pushed, force || !full() ? 1u : 0u);
    if (pushed == 0) return;
    if (full()) queue.pop_front();
    queue.push_back(stored);
  }
  void pop(bool keep) {
    Element out(ring.stride, 0xEE);
    ASSERT_EQ(core_ring_buffer_pop(&ring, keep ? out.data() : nullptr), queue.empty() ? 0u : 1u);
    if (queue.empty()) return;
    ASSERT_TRUE(!keep || out == queue.front());
    queue.pop_front();
  }
  void linearize() {
    const ai_ring_buffer old = ring;
    const uint32_t write_slot = old.write % old.capacity;
    Element tmp(ring.stride);
    const void* result = core_ring_buffer_linearize(&ring, tmp.data());
    const void* expected = nullptr;
    if (!queue.empty()) {
      const bool contiguous = write_slot == 0 || write_slot > old.read % old.capacity;
      ASSERT_EQ(ring.write, contiguous ? old.write : old.write - write_slot);
      ASSERT_EQ(ring.read, contiguous ? old.read : old.read - write_slot);
      expected = contiguous ? slot(old.read)
                            : reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(ring.data) +
                                                      uintptr_t{ring.read} * ring.stride);
    }
    ASSERT_EQ(result, expected);
  }
  void clone() {
    Queues copy(ring.capacity, ring.stride, 0);
    ASSERT_EQ(core_ring_buffer_clone(&copy.ring, &ring), 1u);
    copy.queue = queue;
    copy.push(Element(ring.stride, 0x99).data(), true);
    copy.check();
  }
  void check() const {
    ASSERT_EQ(core_ring_buffer_size(&ring), queue.size());
    ASSERT_EQ(core_ring_buffer_free_size(&ring), ring.capacity - queue.size());
    ASSERT_EQ(core_ring_buffer_empty(&ring), queue.empty());
    ASSERT_EQ(core_ring_buffer_full(&ring), full());
    ASSERT_EQ(core_ring_buffer_get(&ring, static_cast<uint32_t>(queue.size())), nullptr);
    for (size_t i = queue.size(); i > 0; i -= std::min(i, 1 + queue.size() / 8)) {
      ASSERT_EQ(at(core_ring_buffer_get(&ring, static_cast<uint32_t>(i - 1))), queue[i - 1]) << i;
    }
  }

  ai_ring_buffer ring = {};
  std::deque<Element> queue;
};

TEST(RingBuffer, BehavesAsQueue) {
  std::mt19937 random(7);
  const struct {
    uint16_t capacity, stride;
  } sizes[] = {{1, 1}, {1, 4}, {2, 3}, {3, 2}, {7, 5}, {7, 1}, {32767, 1}, {32768, 3}};
  for (const auto [capacity, stride] : sizes) {
    Queues queues(capacity, stride, static_cast<uint16_t>((capacity + 150) % (2 * capacity)));
    for (int step = 100 - capacity; step < 4000; ++step) {
      Element elem(stride);
      for (uint8_t& byte : elem) byte = static_cast<uint8_t>(random());
      const bool filling = step < 0 || step / 500 % 2 == 0;
      const bool cheap = capacity < 100 || step < 100;
      const uint32_t op = step < 0 ? 6 : random() % 7;
      if (op == 0) queues.push(elem.data(), true);
      if (op == 1) queues.push(nullptr, step % 2 == 0);
      if (op == 2) queues.pop(step % 2 == 0);
      if (op == 3 && cheap) queues.linearize();
      if (op == 4 && cheap) queues.clone();
      if (op > 4 && filling) queues.push(elem.data(), false);
      if (op > 4 && !filling) queues.pop(true);
      queues.check();
      ASSERT_FALSE(HasFatalFailure()) << capacity << ' ' << stride << ' ' << step;
    }
    core_ring_buffer_clear(&queues.ring);
    queues.queue.clear();
    queues.check();
  }
}

TEST(RingBuffer, ClonesIntoStorageThatIsLargeEnough) {
  uint8_t storage[12] = {1, 2, 3, 4, 5, 6};
  ai_ring_buffer source = {storage, 2, 3, 5, 2};
  ai_ring_buffer small = {storage + 6, 1, 5, 0, 3};
  EXPECT_EQ(core_ring_buffer_clone(&small, &source), 0u);
  EXPECT_EQ(small.write, 3);
  ai_ring_buffer large = {storage + 6, 1, 6, 4, 4};
  EXPECT_EQ(core_ring_buffer_clone(&large, &source), 1u);
  EXPECT_EQ(large.data, storage + 6);
  EXPECT_EQ(core_ring_buffer_size(&large), 3u);
  EXPECT_EQ(storage[11], 6);
  ai_ring_buffer none = {};
  g_exhausted = true;
  EXPECT_EQ(core_ring_buffer_clone(&none, &source), 0u);
  EXPECT_EQ(core_ring_buffer_init(&none, 3, 2, nullptr), 0u);
  g_exhausted = false;
  EXPECT_EQ(core_ring_buffer_init(&none, 32769, 1, nullptr), 0u);
  source.data = nullptr;
  EXPECT_EQ(core_ring_buffer_clone(&large, &source), 0u);
}

// Without a ring, or with one that holds nothing: nothing is written, nothing comes out.
TEST(RingBuffer, NoneAndOneOfNoCapacity) {
  uint8_t element[4] = {1, 2, 3, 4};
  ai_ring_buffer nothing = {};
  for (ai_ring_buffer* ring : {static_cast<ai_ring_buffer*>(nullptr), &nothing}) {
    core_ring_buffer_clear(ring);
    EXPECT_EQ(core_ring_buffer_push(ring, element), 0u);
    EXPECT_EQ(core_ring_buffer_push_force(ring, element), 0u);
    EXPECT_EQ(core_ring_buffer_pop(ring, element), 0u);
    EXPECT_EQ(core_ring_buffer_get(ring, 0), nullptr);
    EXPECT_EQ(core_ring_buffer_linearize(ring, element), nullptr);
    EXPECT_EQ(core_ring_buffer_stride(ring) + core_ring_buffer_capacity(ring), 0u);
    EXPECT_EQ(core_ring_buffer_size(ring) + core_ring_buffer_free_size(ring), 0u);
    EXPECT_TRUE(core_ring_buffer_empty(ring));
    EXPECT_EQ(core_ring_buffer_get_base_address(ring), nullptr);
    EXPECT_EQ(core_ring_buffer_get_end_address(ring), nullptr);
    EXPECT_EQ(core_ring_buffer_clone(&nothing, ring), 0u);
    EXPECT_EQ(core_ring_buffer_clone(ring, &nothing), 0u);
  }
  EXPECT_EQ(core_ring_buffer_destroy(nullptr), 0u);
  EXPECT_EQ(element[0], 1);
}

TEST(MemManager, RefusesMovedHeaderAndKeepsBlockThatCannotGrow) {
  uintptr_t local[2] = {};
  uintptr_t* block = static_cast<uintptr_t*>(core_mem_alloc(2 * sizeof(uintptr_t)));
  ASSERT_NE(block, nullptr);
  std::memcpy(local, block - 1, sizeof(uintptr_t));
  char* misaligned = reinterpret_cast<char*>(block) + 1;
  for (void* p : {static_cast<void*>(local + 1), static_cast<void*>(misaligned)}) {
    EXPECT_EQ(core_mem_free(p), p);
    EXPECT_EQ(core_mem_realloc(p, 0), p);
    EXPECT_EQ(core_mem_realloc(p, 64), nullptr);
  }
  for (size_t size : {SIZE_MAX, SIZE_MAX - sizeof(void*) + 1, SIZE_MAX / 2}) {
    EXPECT_EQ(core_mem_alloc(size), nullptr);
    EXPECT_EQ(core_mem_realloc(block, size), nullptr);
  }
  EXPECT_EQ(core_mem_free(block), nullptr);
}

// A block that went back to the heap, its memory still as it was, is none any more.
TEST(MemManager, RefusesReleasedBlock) {
  for (const bool moved : {false, true}) {
    void* block = core_mem_alloc(7 * sizeof(void*));
    std::memset(block, 0x5A, 7 * sizeof(void*));
    g_keep = true;
    void* now = moved ? core_mem_realloc(block, 100) : core_mem_free(block);
    EXPECT_EQ(now != nullptr, moved);
    EXPECT_EQ(core_mem_free(block), block);
    EXPECT_EQ(core_mem_realloc(block, 8), nullptr);
    EXPECT_EQ(core_mem_realloc(block, 0), block);
    EXPECT_TRUE(now == nullptr || *static_cast<uint8_t*>(now) == 0x5A);
    EXPECT_EQ(core_mem_free(now), nullptr);
    __real_free(g_kept);
  }
}

uint32_t model_checksum(const std::vector<uint8_t>& bytes) {
  uint16_t sum1 = 0, sum2 = 0;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    sum1 = static_cast<uint16_t>(sum1 + bytes[i] + 256 * bytes[i + 1]);
    sum2 = static_cast<uint16_t>(sum2 + sum1);
  }
  return sum2 * 65536u + sum1;
}

TEST(Checksum, TruncatesBothSums) {
  const std::vector<uint8_t> bytes(300001, 0xFF);
  EXPECT_EQ(core_utils_compute_crc32(bytes.data(), 300001), model_checksum(bytes));
}

template <class T>
void append(std::vector<uint8_t>& bytes, T value) {
  for (size_t i = 0; i < sizeof(value); ++i) bytes.push_back(static_cast<uint8_t>(value >> 8 * i));
}

TEST(Signature, CoversMagicLayersAndFirstOutputs) {
  nnlib::tensor x({1, 3, 2, 1}, static_cast<float*>(nullptr));
  nnlib::tensor y({1, 5, 1, 4}, static_cast<int8_t*>(nullptr), nnlib::copied);
  nnlib::tensor z({1, 2, 1, 1}, static_cast<float*>(nullptr));
  nnlib::layer_chain full(nnlib::list(x), nnlib::list(y, z));
  nnlib::layer_chain empty(nnlib::list(y), nnlib::list());
  ai_layer last = nnlib::layer(AI_LAYER_TYPE_NL, nullptr, full, &last);
  ai_layer middle = nnlib::layer(AI_LAYER_TYPE_GENERIC, nullptr, empty, &last);
  ai_layer first = nnlib::layer(AI_LAYER_TYPE_DENSE, nullptr, full, &middle);
  first.id = 0x1234;
  nnlib::network net(nnlib::list(x), nnlib::list(y), first);
  net.magic = AI_NETWORK_MAGIC;
  std::vector<uint8_t> bytes;
  append(bytes, 0xA1C00100u);
  for (uint32_t word : {0x12342715u, 0x2727u, 0x2719u}) {  // id and type
    append(bytes, word);
    if (word == 0x2727u) continue;
    append(bytes, 0x20840440u);
    append(bytes, uint64_t{0x400});
    append(bytes, uint64_t{reinterpret_cast<uintptr_t>(y.shape.data)});
    for (uint32_t dim : {1u, 5u, 1u, 4u}) append(bytes, dim);
    append(bytes, uint64_t{0x401});
    append(bytes, uint64_t{reinterpret_cast<uintptr_t>(y.stride.data)});
  }
  append(bytes, 3u);
  uint32_t signature = 0;
  EXPECT_TRUE(core_utils_generate_network_signature(&net, &signature));
  EXPECT_EQ(signature, model_checksum(bytes));
  static_cast<ai_tensor&>(y).data = nullptr;
  for (const ptrdiff_t format : {8, 68}) {
    std::fill_n(bytes.begin() + format, 4, uint8_t{0});
  }
  EXPECT_TRUE(core_utils_generate_network_signature(&net, &signature));
  EXPECT_EQ(signature, model_checksum(bytes));
  g_exhausted = true;
  EXPECT_FALSE(core_utils_generate_network_signature(&net, &signature));
  g_exhausted = false;
  EXPECT_EQ(signature, 0u);
  signature = 1;
  EXPECT_FALSE(core_utils_generate_network_signature(nullptr, &signature));
  EXPECT_EQ(signature, 0u);
  EXPECT_FALSE(core_utils_generate_network_signature(&net, nullptr));
}

}  // namespace
