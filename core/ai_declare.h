/* SPDX-License-Identifier: MIT */
/* Helpers that declare networks as static data: macros for C11, the same as types and functions for
 * C++ from C++17 on. A C++ source below C++17 gets neither (nor do the macros exist in C++): it
 * takes its networks from a C source, or writes the records out.
 *
 * Strides, element counts, list sizes and list order follow from what is given. An activation has
 * the dimensions 1, channels, width, height; the order is that of the tensor records: N, C, W, H.
 *
 * C, at file scope:
 *
 *   AI_STATIC_TENSOR(x, AI_ARRAY_FORMAT_FLOAT, 1, 3, 1, 1, NULL);
 *   AI_STATIC_TENSOR(w, AI_ARRAY_FORMAT_FLOAT, 3, 2, 1, 1, w_data);
 *   AI_STATIC_TENSOR(y, AI_ARRAY_FORMAT_FLOAT | AI_FORMAT_FLAG_COPY, 1, 2, 1, 1, y_data);
 *   AI_STATIC_CHAIN(dense_chain, AI_LIST(&x), AI_LIST(&y), AI_LIST(&w), AI_EMPTY_LIST);
 *   static ai_layer dense = AI_LAYER(AI_LAYER_TYPE_DENSE, forward_dense, &dense_chain, NULL);
 *   AI_STATIC_NETWORK(net, AI_IO_LIST(&x), AI_IO_LIST(&y), &dense);
 *
 * C++, the same with types of namespace nnlib:
 *
 *   constinit nnlib::tensor x({1, 3, 1, 1}, static_cast<float*>(nullptr));
 *   constinit nnlib::tensor w({3, 2, 1, 1}, w_data);
 *   constinit nnlib::tensor y({1, 2, 1, 1}, y_data, nnlib::copied);
 *   constinit nnlib::layer_chain dense_chain(nnlib::list(x), nnlib::list(y), nnlib::list(w));
 *   constinit ai_layer dense = nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense, dense_chain);
 *   constinit nnlib::network net(nnlib::list(x), nnlib::list(y), dense);
 */
#ifndef NNLIB_CORE_AI_DECLARE_H
#define NNLIB_CORE_AI_DECLARE_H

#include "core/ai_network.h"

/* The tensor flags that go with a format: float, fixed point when it has fractional bits, else
 * integer. Fixed point without fractional bits is the same word as an integer (Q7.0 is S8): the
 * declaration of such a tensor gives the flags itself (AI_STATIC_TENSOR_FLAGS, the last argument of
 * nnlib::tensor). */
#define AI_TENSOR_FLAGS_OF(format)                             \
  (((format)&UINT32_C(0x1000000)) != 0 ? AI_TENSOR_FLAGS_FLOAT \
   : ((format)&127u) != 64u            ? AI_TENSOR_FLAGS_FIXED \
                                       : AI_TENSOR_FLAGS_INTEGER)

#ifndef __cplusplus

/* name and name_array: a tensor over an array of its own, data its elements or NULL. */
#define AI_STATIC_TENSOR(name, format, n, c, w, h, elements) \
  AI_STATIC_TENSOR_Q(name, format, n, c, w, h, elements, NULL)

/* The same with a quantization record, const ai_intq_info_list*. */
#define AI_STATIC_TENSOR_Q(name, format, n, c, w, h, elements, quantization) \
  AI_STATIC_TENSOR_FLAGS(name, format, n, c, w, h, elements, quantization,   \
                         AI_TENSOR_FLAGS_OF(format))

/* The same with flags, AI_TENSOR_FLAGS_*, that are not those of the format. */
#define AI_STATIC_TENSOR_FLAGS(name, format, n, c, w, h, elements, quantization, flags) \
  static ai_array name##_array = {(format), (n) * (c) * (w) * (h), (void*)(elements),   \
                                  (void*)(elements)};                                   \
  static ai_tensor name = {                                                             \
      (quantization),                                                                   \
      (flags),                                                                          \
      {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), (uint32_t[]){(n), (c), (w), (h)}},   \
      {AI_DIMS_WORD(AI_STRIDE_TYPE, AI_SHAPE_DIMS),                                     \
       (uint32_t[]){AI_FORMAT_RUN_BYTES(format, 1), AI_FORMAT_RUN_BYTES(format, n),     \
                    AI_FORMAT_RUN_BYTES(format, n) * (c),                               \
                    AI_FORMAT_RUN_BYTES(format, n) * (c) * (w)}},                       \
      &name##_array}

/* A quantization record of `entries` scales (const float[]) and zero points. */
#define AI_STATIC_INTQ(name, entries, scales, zeropoints)           \
  static const ai_intq_info_list name = {(uint32_t)(entries) << 16, \
                                         &(const ai_intq_info){(scales), (zeropoints)}}

#define AI_LIST_SIZE_(...) (sizeof((ai_tensor*[]){__VA_ARGS__}) / sizeof(ai_tensor*))

/* Tensor lists; an absent optional tensor is a NULL entry. */
#define AI_LIST(...) \
  { AI_LIST_SIZE_(__VA_ARGS__), (ai_tensor* const[]){__VA_ARGS__}, NULL }
#define AI_EMPTY_LIST \
  { 0, NULL, NULL }

/* A list with the records that a network's inputs and outputs need. */
#define AI_IO_LIST(...)                                                                           \
  {                                                                                               \
    AI_LIST_SIZE_(__VA_ARGS__), (ai_tensor* const[]){__VA_ARGS__}, &(const ai_tensor_list_info) { \
      (ai_buffer_cursor[AI_LIST_SIZE_(__VA_ARGS__)]){{0}},                                        \
          (ai_buffer[AI_LIST_SIZE_(__VA_ARGS__)]){{0}},                                           \
          (ai_buffer_meta_info[AI_LIST_SIZE_(__VA_ARGS__)]) {                                     \
        { 0 }                                                                                     \
      }                                                                                           \
    }                                                                                             \
  }

/* A layer's chain of four lists. */
#define AI_STATIC_CHAIN(name, inputs, outputs, weights, scratch)                                  \
  static const ai_tensor_list name##_lists[AI_CHAIN_LISTS] = {inputs, outputs, weights, scratch}; \
  static const ai_tensor_chain name = {AI_CHAIN_LISTS, name##_lists}

/* Initialiser of the base record; next is the following layer or NULL. */
#define AI_LAYER(type, forward, chain, next) \
  { (type), 0, NULL, NULL, (next), (forward), (chain) }

/* A network of AI_IO_LIST inputs and outputs. */
#define AI_STATIC_NETWORK(name, inputs, outputs, first_layer)      \
  static const ai_tensor_list name##_lists[2] = {inputs, outputs}; \
  static ai_network name = {.io = {2, name##_lists}, .layers = (first_layer)}

#elif __cplusplus >= 201703L

#include <type_traits>

namespace nnlib {

struct dims {
  uint32_t n, c, w, h;
  constexpr uint32_t elements() const { return n * c * w * h; }
};

/* The format of arrays of T. */
template <class T>
inline constexpr ai_array_format format_of = AI_ARRAY_FORMAT_NONE;
template <>
inline constexpr ai_array_format format_of<float> = AI_ARRAY_FORMAT_FLOAT;
template <>
inline constexpr ai_array_format format_of<uint8_t> = AI_ARRAY_FORMAT_U8;
template <>
inline constexpr ai_array_format format_of<int8_t> = AI_ARRAY_FORMAT_S8;
template <>
inline constexpr ai_array_format format_of<uint16_t> = AI_ARRAY_FORMAT_U16;
template <>
inline constexpr ai_array_format format_of<int16_t> = AI_ARRAY_FORMAT_S16;
template <>
inline constexpr ai_array_format format_of<uint32_t> = AI_ARRAY_FORMAT_U32;
template <>
inline constexpr ai_array_format format_of<int32_t> = AI_ARRAY_FORMAT_S32;

inline constexpr uint32_t copied = AI_FORMAT_FLAG_COPY;

/* Scale and zero point of each entry; both arrays have Entries elements. */
template <class ZeroPoint, size_t Entries>
struct intq : ai_intq_info_list {
  constexpr intq(const float (&scales)[Entries], const ZeroPoint (&zeropoints)[Entries])
      : ai_intq_info_list{static_cast<uint32_t>(Entries) << 16, &entries_},
        entries_{scales, zeropoints} {}
  intq(const intq&) = delete;
  intq& operator=(const intq&) = delete;

 private:
  ai_intq_info entries_;
};

/* A tensor over an array of its own. It points into itself, so it is declared in place. */
struct tensor : ai_tensor {
  /* elements: the array's data, never written through when it is a layer's constant input. */
  constexpr tensor(ai_array_format format, dims d, const void* elements,
                   const ai_intq_info_list* quantization = nullptr)
      : tensor(format, d, elements, elements, quantization) {}

  /* tensor_flags, AI_TENSOR_FLAGS_*, that are not those of the format. */
  constexpr tensor(ai_array_format format, dims d, const void* elements,
                   const ai_intq_info_list* quantization, uint32_t tensor_flags)
      : tensor(format, d, elements, elements, quantization, tensor_flags) {}

  /* The format follows from the elements' type; format_flags is nnlib::copied or 0. */
  template <class T>
  constexpr tensor(dims d, T* elements, uint32_t format_flags = 0,
                   const ai_intq_info_list* quantization = nullptr)
      : tensor(format_of<std::remove_cv_t<T>> | format_flags, d, elements, elements, quantization) {
    static_assert(format_of<std::remove_cv_t<T>> != AI_ARRAY_FORMAT_NONE);
  }

  /* data and data_start apart: an offset into a shared buffer, or indices and their table. */
  constexpr tensor(ai_array_format format, dims d, const void* elements, const void* start,
                   const ai_intq_info_list* quantization)
      : tensor(format, d, elements, start, quantization, AI_TENSOR_FLAGS_OF(format)) {}

  constexpr tensor(ai_array_format format, dims d, const void* elements, const void* start,
                   const ai_intq_info_list* quantization, uint32_t tensor_flags)
      : ai_tensor{quantization,
                  tensor_flags,
                  {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), shape_},
                  {AI_DIMS_WORD(AI_STRIDE_TYPE, AI_SHAPE_DIMS), stride_},
                  &array},
        array{format, d.elements(), const_cast<void*>(elements), const_cast<void*>(start)},
        shape_{d.n, d.c, d.w, d.h},
        stride_{AI_FORMAT_RUN_BYTES(format, 1), AI_FORMAT_RUN_BYTES(format, d.n),
                AI_FORMAT_RUN_BYTES(format, d.n) * d.c,
                AI_FORMAT_RUN_BYTES(format, d.n) * d.c * d.w} {}

  tensor(const tensor&) = delete;
  tensor& operator=(const tensor&) = delete;

  ai_array array;

 private:
  uint32_t shape_[AI_SHAPE_DIMS];
  uint32_t stride_[AI_SHAPE_DIMS];
};

/* An absent optional tensor, the last one of its list. */
inline constexpr ai_tensor* absent = nullptr;

template <size_t Count>
struct tensor_list {
  ai_tensor* tensors[Count == 0 ? 1 : Count];
};

constexpr ai_tensor* tensor_pointer(ai_tensor& t) {
  return &t;
}
constexpr ai_tensor* tensor_pointer(ai_tensor* t) {
  return t;
}

/* A list of tensors and absent ones. */
template <class... Tensors>
constexpr tensor_list<sizeof...(Tensors)> list(Tensors&&... tensors) {
  return {{tensor_pointer(tensors)...}};
}

/* A layer's chain of four lists. */
template <size_t Inputs, size_t Outputs, size_t Weights = 0, size_t Scratch = 0>
struct layer_chain : ai_tensor_chain {
  constexpr layer_chain(tensor_list<Inputs> inputs, tensor_list<Outputs> outputs,
                        tensor_list<Weights> weights = {}, tensor_list<Scratch> scratch = {})
      : ai_tensor_chain{AI_CHAIN_LISTS, lists_},
        inputs_(inputs),
        outputs_(outputs),
        weights_(weights),
        scratch_(scratch),
        lists_{{Inputs, inputs_.tensors, nullptr},
               {Outputs, outputs_.tensors, nullptr},
               {Weights, weights_.tensors, nullptr},
               {Scratch, scratch_.tensors, nullptr}} {}
  layer_chain(const layer_chain&) = delete;
  layer_chain& operator=(const layer_chain&) = delete;

 private:
  tensor_list<Inputs> inputs_;
  tensor_list<Outputs> outputs_;
  tensor_list<Weights> weights_;
  tensor_list<Scratch> scratch_;
  ai_tensor_list lists_[AI_CHAIN_LISTS];
};

/* The base record of a layer: the layer itself, or the first member of a kind's record. */
constexpr ai_layer layer(uint16_t type, ai_layer_forward forward, const ai_tensor_chain& chain,
                         ai_layer* next = nullptr) {
  return {type, 0, nullptr, nullptr, next, forward, &chain};
}

/* A network of its inputs, its outputs and its first layer. */
template <size_t Inputs, size_t Outputs>
struct network : ai_network {
  constexpr network(tensor_list<Inputs> inputs, tensor_list<Outputs> outputs, ai_layer& first)
      : ai_network{},
        inputs_(inputs),
        outputs_(outputs),
        infos_{{cursors_, buffers_, meta_infos_},
               {cursors_ + Inputs, buffers_ + Inputs, meta_infos_ + Inputs}},
        lists_{{Inputs, inputs_.tensors, &infos_[0]}, {Outputs, outputs_.tensors, &infos_[1]}} {
    io = {2, lists_};
    layers = &first;
  }
  network(const network&) = delete;
  network& operator=(const network&) = delete;

 private:
  tensor_list<Inputs> inputs_;
  tensor_list<Outputs> outputs_;
  ai_buffer_cursor cursors_[Inputs + Outputs] = {};
  ai_buffer buffers_[Inputs + Outputs] = {};
  ai_buffer_meta_info meta_infos_[Inputs + Outputs] = {};
  ai_tensor_list_info infos_[2];
  ai_tensor_list lists_[2];
};

}  // namespace nnlib

#endif

#endif
