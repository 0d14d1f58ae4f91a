// SPDX-License-Identifier: MIT
// Walks that layers steer: branches between a split and an add layer, and inner chains run for each
// time step.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "layers/layers_generic_float.h"
#include "nnlib.h"

namespace {

using nnlib::list;

struct AffineLayer {
  ai_layer base;
  const float* in;
  float* out;
  float factor, offset;
};

void forward_affine(ai_layer* layer) {
  const AffineLayer& affine = *reinterpret_cast<AffineLayer*>(layer);
  *affine.out = *affine.in * affine.factor + affine.offset;
}

const nnlib::layer_chain<0, 0> kNoTensors{{}, {}};

constexpr ai_layer plain(ai_layer_forward forward, ai_layer* next = nullptr) {
  return nnlib::layer(AI_LAYER_TYPE_GENERIC, forward, kNoTensors, next);
}

// split -> [doubled, raised] -> add -> halved: y = ((2 * x + 3) + (5 - x)) / 2
//       -> [opposite]        ->
struct BranchedNetwork {
  static void enter(void* branch_context, void* context) {
    *static_cast<std::string*>(context) += static_cast<const char*>(branch_context);
  }
  // The first result starts the sum, the others are added to it.
  static void accumulate(void* context, void* branch) {
    BranchedNetwork& self = *static_cast<BranchedNetwork*>(context);
    self.trace += "+";
    self.sum = (self.add.index == 0 ? 0 : self.sum) + *static_cast<float*>(branch);
  }

  std::string trace;
  float x, d, r, o, sum, y;
  AffineLayer halved = {plain(forward_affine), &sum, &y, 0.5f, 0};
  AffineLayer raised = {plain(forward_affine, &add.base), &d, &r, 1, 3};
  AffineLayer doubled = {plain(forward_affine, &raised.base), &x, &d, 2, 0};
  AffineLayer opposite = {plain(forward_affine, &add.base), &x, &o, -1, 5};
  ai_layer* starts[2] = {&doubled.base, &opposite.base};
  char names[2][2] = {"a", "b"};
  void* contexts[2] = {names[0], names[1]};
  void* results[2] = {&r, &o};
  ai_layer_split split = {
      plain(forward_split, &doubled.base), 2, 0, starts, contexts, enter, &trace};
  ai_layer_add add = {
      plain(forward_add, &halved.base), 2, 0, results, accumulate, this, &split.base, &halved.base};
  ai_network net = {};
};

TEST(Routing, TwoBranchesRunAfterEachOther) {
  BranchedNetwork network;
  network.net.layers = &network.split.base;
  for (const float x : {5.0f, -7.0f}) {
    network.trace.clear();
    network.x = x;
    ai_layers_forward_all(&network.net);
    EXPECT_EQ(network.trace, "a+b+");
    EXPECT_EQ(network.y, (x + 8) / 2);
  }
}

TEST(Routing, CallbacksAreOptional) {
  BranchedNetwork network;
  network.net.layers = &network.split.base;
  network.split.callback = nullptr;
  network.split.branch_contexts = nullptr;
  network.add.callback = nullptr;
  network.add.branches = nullptr;
  network.add.continuation = &network.add.base;  // the network ends with the merge
  network.x = 4;
  ai_layers_forward_all(&network.net);
  EXPECT_EQ(network.trace, "");
  EXPECT_EQ(network.r, 11);
  EXPECT_EQ(network.o, 1);
}

// --- time distributed ---------------------------------------------------------------------------

constexpr uint32_t kFeatures = 3;
constexpr uint32_t kSteps = 4;

std::vector<const ai_tensor_chain*> g_chains;  // what every run of a spy layer was given
uint16_t g_lists;                              // in the last of them

// out = 10 * in, once the tensors are those of one step.
void forward_spy(ai_layer* layer) {
  g_chains.push_back(layer->tensor_chain);
  g_lists = layer->tensor_chain->size;
  const ai_tensor* in = ai_tensor_chain_input(layer->tensor_chain, 0);
  const ai_tensor* out = ai_tensor_chain_output(layer->tensor_chain, 0);
  for (const ai_tensor* tensor : {in, out}) {
    EXPECT_EQ(ai_tensor_dim(tensor, AI_SHAPE_H), 1u);
    EXPECT_EQ(ai_tensor_batch_bytes(tensor), kFeatures * sizeof(float));
    EXPECT_EQ(ai_tensor_size(tensor), kFeatures);
    EXPECT_EQ(tensor->data->data, tensor->data->data_start);
  }
  for (uint32_t i = 0; i < kFeatures; ++i) {
    static_cast<float*>(ai_tensor_data(out))[i] = 10 * static_cast<float*>(ai_tensor_data(in))[i];
  }
}

struct Sequence {
  Sequence() {
    for (uint32_t i = 0; i < kFeatures * kSteps; ++i) in_data[i] = float(i) * float(i) - 20;
  }
  void run(ai_layer& inner, const ai_tensor_chain& outer) {
    ai_layer_time_distributed layer = {
        nnlib::layer(AI_LAYER_TYPE_TIME_DISTRIBUTED, forward_time_distributed, outer), &inner};
    const ai_tensor_chain* const before = inner.tensor_chain;
    g_chains.clear();
    forward_time_distributed(&layer.base);
    EXPECT_EQ(inner.tensor_chain, before);
  }
  float in_data[kFeatures * kSteps], out_data[kFeatures * kSteps] = {};
  nnlib::tensor in{{1, kFeatures, 1, kSteps}, in_data}, out{{1, kFeatures, 1, kSteps}, out_data};
  nnlib::layer_chain<1, 1> chain{list(in), list(out)};
};

TEST(TimeDistributed, OneInnerLayerAlsoInPlace) {
  const Sequence original;
  for (const bool in_place : {false, true}) {
    Sequence sequence;
    nnlib::tensor& out = in_place ? sequence.in : sequence.out;
    nnlib::layer_chain chain(list(sequence.in), list(out));
    chain.size = in_place ? 2 : AI_CHAIN_LISTS;  // an inner layer may do without the other lists
    ai_layer spy = nnlib::layer(AI_LAYER_TYPE_GENERIC, forward_spy, chain);
    sequence.run(spy, chain);
    EXPECT_EQ(g_lists, chain.size);
    EXPECT_EQ(g_chains.size(), kSteps);
    for (uint32_t i = 0; i < kFeatures * kSteps; ++i) {
      EXPECT_EQ(static_cast<float*>(out.array.data)[i], 10 * original.in_data[i]);
    }
  }
}

// The first of three layers has a second input that stays; the last points to itself.
TEST(TimeDistributed, SeveralInnerLayers) {
  Sequence sequence;
  float offsets[kFeatures] = {1, -2, 4}, a_data[kFeatures], b_data[kFeatures];
  nnlib::tensor offset({1, kFeatures, 1, 1}, offsets), a({1, kFeatures, 1, 1}, a_data),
      b({1, kFeatures, 1, 1}, b_data);
  const nnlib::layer_chain first_chain(list(sequence.in, offset), list(a));
  const nnlib::layer_chain middle_chain(list(a), list(b)), last_chain(list(b), list(sequence.out));
  ai_layer last = nnlib::layer(AI_LAYER_TYPE_GENERIC, forward_spy, last_chain, &last);
  ai_layer middle = nnlib::layer(AI_LAYER_TYPE_GENERIC, forward_spy, middle_chain, &last);
  ai_layer_eltwise first = {
      nnlib::layer(AI_LAYER_TYPE_ELTWISE, forward_eltwise, first_chain, &middle), ai_sub};
  sequence.run(first.base, sequence.chain);
  EXPECT_EQ(last.tensor_chain, &last_chain);
  EXPECT_EQ(g_chains.size(), 2 * kSteps);
  EXPECT_EQ(g_chains[0], &middle_chain);
  EXPECT_NE(g_chains[1], &last_chain);
  for (uint32_t i = 0; i < kFeatures * kSteps; ++i) {
    EXPECT_EQ(sequence.out_data[i], 100 * (sequence.in_data[i] - offsets[i % kFeatures]));
  }
}

TEST(TimeDistributedDeathTest, ListTooLongToStandInFor) {
  Sequence s;
  const nnlib::layer_chain most(list(s.in, s.in, s.in, s.in, s.in, s.in, s.in, s.in), list(s.out));
  const nnlib::layer_chain more(list(s.in, s.in, s.in, s.in, s.in, s.in, s.in, s.in, s.in),
                                list(s.out));
  ai_layer spy = nnlib::layer(AI_LAYER_TYPE_GENERIC, forward_spy, most);
  s.run(spy, s.chain);
  EXPECT_EQ(g_chains.size(), kSteps);
  spy.tensor_chain = &more;
  EXPECT_DEATH(s.run(spy, s.chain), "");
}

}  // namespace
