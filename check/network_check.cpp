// SPDX-License-Identifier: MIT
#include "check/ai_network_check.h"

#include <initializer_list>

#include "check/data_flow.hpp"
#include "check/inner_layers.hpp"
#include "check/layer_check.hpp"
#include "check/walk.hpp"

namespace nnlib {
namespace {

// A run copies batches of as many bytes as the strides say, or points the array at the caller's; a
// buffer has as many elements as the dimensions say.
void check_batch(const Scope& scope, TensorName name, const ai_tensor& tensor, Report& report) {
  const ai_stride& stride = tensor.stride;
  if (stride.data == nullptr || ai_dims_count(stride.type_size) != AI_SHAPE_DIMS) {
    Finding(report) << name << " has no " << AI_SHAPE_DIMS << " strides";
    return;
  }
  const uint64_t batch = product(stride.data[AI_SHAPE_H], tensor.shape.data[AI_SHAPE_H]);
  const uint64_t held = run_bytes(tensor.data->format, tensor.data->size);
  const bool bound = scope.binds(*tensor.data);
  if (held < batch || (bound && held > batch)) {
    Finding(report) << name << " has an array of " << held << " bytes, its dimensions "
                    << dims_of(tensor) << " and strides take " << batch
                    << (bound ? ": the caller's memory, at which a run points it" : "");
    return;
  }
  const uint32_t* sizes = tensor.shape.data;
  const uint64_t elements =
      product(product(sizes[AI_SHAPE_C], sizes[AI_SHAPE_W]), sizes[AI_SHAPE_H]);
  if (tensor.data->size < elements) {
    Finding(report) << name << " has an array of " << Count{tensor.data->size, "element"}
                    << ", a buffer of its dimensions " << dims_of(tensor) << " has " << elements;
  }
}

// A tensor that crosses the platform API.
void check_io_tensor(const Scope& scope, TensorName name, Report& report) {
  const ai_tensor* tensor = ai_tensor_chain_get(&scope.network.io, name.list, name.index);
  if (!is_sound(tensor)) {
    Finding(report) << name << " has no array or no shape of " << AI_SHAPE_DIMS << " dimensions";
    return;
  }
  if (!ai_array_fmt_exported(tensor->data->format)) {
    Finding(report) << name << " has the format " << FormatName{tensor->data->format}
                    << ", which no buffer has";
  }
  for (const uint32_t side : {AI_SHAPE_W, AI_SHAPE_H}) {
    if (tensor->shape.data[side] > 0xFFFF) {
      Finding(report) << name << " has the dimensions " << dims_of(*tensor)
                      << ", a buffer's width and height are at most 65535";
      break;
    }
  }
  check_batch(scope, name, *tensor, report);
}

// An array that a run points at the caller's memory can be of one input or output only.
void check_shared_arrays(const Scope& scope, Report& report) {
  const auto array = [&scope](TensorName name) {
    return ai_tensor_array(ai_tensor_chain_get(&scope.network.io, name.list, name.index));
  };
  TensorName names[] = {{AI_CHAIN_INPUT, 0}, {AI_CHAIN_OUTPUT, 0}};
  const uint32_t inputs = ai_tensor_list_count(ai_tensor_chain_list(&scope.network.io, 0));
  const uint32_t outputs = ai_tensor_list_count(ai_tensor_chain_list(&scope.network.io, 1));
  for (names[0].index = 0; names[0].index < inputs; ++names[0].index) {
    for (names[1].index = 0; names[1].index < outputs; ++names[1].index) {
      const ai_array* shared = array(names[0]);
      if (shared != nullptr && shared == array(names[1]) && scope.binds(*shared)) {
        Finding(report) << names[0] << " and " << names[1]
                        << " have one array, which a run can point at 1 of the caller's 2 buffers:"
                           " give it AI_FORMAT_FLAG_COPY";
      }
    }
  }
}

// An input or output list of the network, with the records that a process call keeps behind it.
void check_io_list(const Scope& scope, uint32_t list, Report& report) {
  const char* name = list == AI_CHAIN_INPUT ? "inputs" : "outputs";
  const ai_tensor_list* tensors = ai_tensor_chain_list(&scope.network.io, list);
  const uint32_t count = ai_tensor_list_count(tensors);
  if (count == 0) {
    Finding(report) << "the network has 0 " << name << ", at least 1 is needed";
    return;
  }
  if (count < tensors->size) {
    Finding(report) << "entry " << count << " of the network's " << uint32_t{tensors->size} << ' '
                    << name << " is null";
  }
  const ai_tensor_list_info* info = tensors->info;
  if (info == nullptr || info->cursors == nullptr || info->buffers == nullptr ||
      info->meta_infos == nullptr) {
    Finding(report) << "the list of the network's " << count << ' ' << name
                    << " has no cursors, buffers and meta infos: it is declared by AI_IO_LIST, not"
                       " by AI_LIST";
  }
  for (uint32_t i = 0; i < count; ++i) {
    check_io_tensor(scope, {list, i}, report);
  }
}

void check_end(const WalkLength& length, Report& report) {
  if (!length.ends) {
    Finding(report) << "the list of layers does not end: behind layer " << length.layers - 1
                    << " comes layer " << length.back_to;
  }
}

void check_layers(const Scope& scope, uint32_t layers, Report& report) {
  Walk walk(scope.network.layers);
  for (uint32_t place = 0; place < layers; ++place, walk.step()) {
    check_layer(scope, *walk.layer(), walk.layer()->tensor_chain, {place}, report);
  }
  report.enter({});
}

}  // namespace
}  // namespace nnlib

uint32_t ai_network_check(const ai_network* network, ai_check_report report, void* context) {
  using namespace nnlib;
  Report findings(report, context);
  if (network == nullptr) {
    Finding(findings) << "there is no network, the pointer is null";
    return findings.count();
  }
  const Scope scope = {*network};
  check_io_list(scope, AI_CHAIN_INPUT, findings);
  check_io_list(scope, AI_CHAIN_OUTPUT, findings);
  check_shared_arrays(scope, findings);
  if (network->layers == nullptr) {
    Finding(findings) << "the network has 0 layers, at least 1 is needed";
    return findings.count();
  }
  const WalkLength length = length_of(Walk(network->layers));
  check_end(length, findings);
  check_layers(scope, length.layers, findings);
  check_data_flow(scope, length.layers, findings);
  return findings.count();
}
