// SPDX-License-Identifier: MIT
#include "core/core_broadcast.h"

namespace {

// The dimension count of a, the type byte that the record has.
template <class Record>
void take_count(Record& record, const ai_shape& a) {
  record.type_size = AI_DIMS_WORD(ai_dims_type(record.type_size), ai_dims_count(a.type_size));
}

}  // namespace

void core_get_broadcasted_shape(ai_shape* out, const ai_shape* a, const ai_shape* b) {
  take_count(*out, *a);
  for (uint32_t i = 0; i < ai_dims_count(a->type_size); ++i) {
    out->data[i] = a->data[i] > b->data[i] ? a->data[i] : b->data[i];
  }
}

void core_compute_offsets(ai_offsets* out, const ai_shape* a, const ai_shape* s) {
  uint32_t eq[AI_SHAPE_DIMS];
  uint32_t ne[AI_SHAPE_DIMS];
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    eq[i] = a->data[i] == s->data[i] ? 1 : 0;
    ne[i] = 1 - eq[i];
  }
  const uint32_t a0 = a->data[0];
  const uint32_t a01 = a0 * a->data[1];
  const uint32_t a012 = a01 * a->data[2];
  take_count(*out, *a);
  out->data[0] = static_cast<int32_t>(eq[0]);
  out->data[1] = static_cast<int32_t>(eq[1] * ne[0] - a0 * ne[1]);
  out->data[2] = static_cast<int32_t>(a0 * ne[1] + ne[0] * ne[1] * eq[2] - a01 * ne[2]);
  out->data[3] = static_cast<int32_t>(a01 * ne[2] + ne[0] * ne[1] * ne[2] * eq[3] - a012 * ne[3]);
}
