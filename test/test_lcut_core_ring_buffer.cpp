// SPDX-License-Identifier: MIT
// The ring buffer.
#include "test/fixture.hpp"

namespace {

// Room for three 16-bit items.
struct Ring {
  Ring() { core_ring_buffer_init(&rb, 3, sizeof(int16_t), storage); }
  uint32_t push(int16_t item) { return core_ring_buffer_push(&rb, &item); }
  uint32_t push_force(int16_t item) { return core_ring_buffer_push_force(&rb, &item); }

  int16_t storage[3] = {-1, -1, -1};
  ai_ring_buffer rb;
};

void check_items(lcut_case* tc, const Ring& ring, std::initializer_list<int> expected,
                 Site site = CALLING_SITE) {
  const uint32_t size = static_cast<uint32_t>(expected.size());
  check_equal(tc, {size, 3 - size, size == 0, size == 3, true},
              {core_ring_buffer_size(&ring.rb), core_ring_buffer_free_size(&ring.rb),
               core_ring_buffer_empty(&ring.rb), core_ring_buffer_full(&ring.rb),
               core_ring_buffer_get(&ring.rb, size) == nullptr},
              site);
  for (uint32_t i = 0; i < size; ++i) {
    const int16_t* item = static_cast<const int16_t*>(core_ring_buffer_get(&ring.rb, i));
    lcut_int_near(tc, expected.begin()[i], *item, 0, site.line, site.function, site.file);
  }
}

}  // namespace

CASE(tc_core_ring_buffer_sanity) {
  ai_ring_buffer rb = {};
  check_equal(
      tc, {0, 0, 0, 15},
      {core_ring_buffer_init(nullptr, 3, 2, nullptr), core_ring_buffer_init(&rb, 0, 2, nullptr),
       core_ring_buffer_init(&rb, 3, 0, nullptr), core_ring_buffer_init(&rb, 3, 5, nullptr)});
  check_equal(tc, {3, 5}, {core_ring_buffer_capacity(&rb), core_ring_buffer_stride(&rb)});
  uint8_t* base = static_cast<uint8_t*>(core_ring_buffer_get_base_address(&rb));
  LCUT_TRUE(tc, core_ring_buffer_get_end_address(&rb) == base + 15);
  LCUT_INT_EQUAL(tc, 1, core_ring_buffer_destroy(&rb));
  LCUT_TRUE(tc, rb.data == nullptr && rb.capacity == 0);
  static uintptr_t storage[2] = {};  // the caller's is not released
  LCUT_INT_EQUAL(tc, 4, core_ring_buffer_init(&rb, 2, 2, &storage[1]));
  LCUT_INT_EQUAL(tc, 0, core_ring_buffer_destroy(&rb));
  LCUT_TRUE(tc, rb.data == &storage[1] && rb.capacity == 2);
  LCUT_TRUE(tc, core_ring_buffer_empty(nullptr) && !core_ring_buffer_full(nullptr));
}

CASE(tc_core_ring_buffer_push_pop) {
  Ring ring;
  int16_t item = -7;
  check_equal(tc, {0, -7}, {core_ring_buffer_pop(&ring.rb, &item), item});
  int16_t next = 100;
  for (int oldest = 100; oldest < 107; ++oldest) {  // twice round the indices
    while (ring.push(next) == 1) {
      ++next;
    }
    check_items(tc, ring, {oldest, oldest + 1, oldest + 2});
    core_ring_buffer_pop(&ring.rb, &item);
    LCUT_INT_EQUAL(tc, oldest, item);
  }
  core_ring_buffer_push(&ring.rb, nullptr);  // the slot keeps what it held
  check_items(tc, ring, {107, 108, 106});
  core_ring_buffer_clear(&ring.rb);
  check_items(tc, ring, {});
}

CASE(tc_core_ring_buffer_linearize) {
  Ring ring;
  int16_t tmp = 0;
  LCUT_TRUE(tc, core_ring_buffer_linearize(&ring.rb, &tmp) == nullptr);
  for (int16_t i = 0; i < 8; ++i) {
    LCUT_INT_EQUAL(tc, 1, ring.push_force(i));
  }
  check_items(tc, ring, {5, 6, 7});
  core_ring_buffer_linearize(&ring.rb, &tmp);
  check_items(tc, ring, {5, 6, 7});
  LCUT_TRUE(tc, core_ring_buffer_get(&ring.rb, 0) == ring.storage);
  core_ring_buffer_pop(&ring.rb, nullptr);
  check_items(tc, ring, {6, 7});
  LCUT_TRUE(tc, core_ring_buffer_linearize(&ring.rb, &tmp) == &ring.storage[1]);  // in order
  Ring upper;  // its write index ends in the upper half of the range
  for (int16_t item = 1; item < 5; ++item) {
    if (upper.push(item) == 0) {
      core_ring_buffer_pop(&upper.rb, nullptr);
      core_ring_buffer_pop(&upper.rb, nullptr);
      upper.push(item);
    }
  }
  core_ring_buffer_linearize(&upper.rb, &tmp);
  check_items(tc, upper, {3, 4});
  LCUT_TRUE(tc, core_ring_buffer_get(&upper.rb, 1) == &upper.storage[2]);
}

SUITE(test_lcut_core_ring_buffer, "test_lcut_core_ring_buffer test unit",
      ENTRY(tc_core_ring_buffer_sanity), ENTRY(tc_core_ring_buffer_push_pop),
      ENTRY(tc_core_ring_buffer_linearize))
