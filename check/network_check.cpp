// SPDX-License-Identifier: MIT
#include "check/ai_network_check.h"
#include "check/data_flow.hpp"
#include "check/inner_layers.hpp"
#include "check/layer_check.hpp"
#include "check/walk.hpp"

namespace nnlib {
namespace {

// An input or output list of the network, with the records that a process call keeps behind it.
void check_io_list(const ai_network& network, uint32_t list, Report& report) {
  const char* name = list == AI_CHAIN_INPUT ? "inputs" : "outputs";
  const ai_tensor_list* tensors = ai_tensor_chain_list(&network.io, list);
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
  check_io_list(*network, AI_CHAIN_INPUT, findings);
  check_io_list(*network, AI_CHAIN_OUTPUT, findings);
  if (network->layers == nullptr) {
    Finding(findings) << "the network has 0 layers, at least 1 is needed";
    return findings.count();
  }
  const Scope scope = {*network};
  const WalkLength length = length_of(Walk(network->layers));
  check_end(length, findings);
  check_layers(scope, length.layers, findings);
  check_data_flow(scope, length.layers, findings);
  return findings.count();
}
