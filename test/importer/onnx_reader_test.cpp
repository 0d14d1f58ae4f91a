// SPDX-License-Identifier: MIT
// The ONNX reader on files that are built here, whole and damaged.
#include <gtest/gtest.h>
#include <onnx/onnx_pb.h>

#include <cmath>
#include <random>

#include "importer/graph/refusals.hpp"
#include "importer/main/import_model.hpp"
#include "importer/read/onnx.hpp"

namespace nnlib::importer {
namespace {

class ModelFile {
 public:
  ModelFile() {
    model_.set_ir_version(7);
    model_.add_opset_import()->set_version(13);
  }

  ModelFile& input(const char* name, std::vector<int64_t> shape, int type = 1) {
    port(*model_.mutable_graph()->add_input(), name, shape, type);
    return *this;
  }
  ModelFile& output(const char* name, std::vector<int64_t> shape = {}) {
    port(*model_.mutable_graph()->add_output(), name, shape, 1);
    return *this;
  }
  ModelFile& floats(const char* name, std::vector<int64_t> shape, std::vector<float> elements) {
    onnx::TensorProto& t = *model_.mutable_graph()->add_initializer();
    t.set_name(name);
    t.set_data_type(onnx::TensorProto::FLOAT);
    t.mutable_dims()->Add(shape.begin(), shape.end());
    t.mutable_float_data()->Add(elements.begin(), elements.end());
    return *this;
  }
  onnx::NodeProto& node(const char* op, std::vector<const char*> inputs, const char* result) {
    onnx::NodeProto& n = *model_.mutable_graph()->add_node();
    n.set_op_type(op);
    n.set_name(std::string(result) + "_node");
    for (const char* input : inputs) {
      n.add_input(input);
    }
    n.add_output(result);
    return n;
  }
  onnx::ModelProto& proto() { return model_; }
  std::string bytes() const { return model_.SerializeAsString(); }

 private:
  static void port(onnx::ValueInfoProto& p, const char* name, const std::vector<int64_t>& shape,
                   int type) {
    p.set_name(name);
    auto& tensor = *p.mutable_type()->mutable_tensor_type();
    tensor.set_elem_type(type);
    for (const int64_t size : shape) {
      auto& dim = *tensor.mutable_shape()->add_dim();
      if (size < 0) {
        dim.set_dim_param("open" + std::to_string(-size));
      } else {
        dim.set_dim_value(size);
      }
    }
  }

  onnx::ModelProto model_;
};

void set_ints(onnx::NodeProto& node, const char* name, std::vector<int64_t> values) {
  onnx::AttributeProto& a = *node.add_attribute();
  a.set_name(name);
  a.set_type(onnx::AttributeProto::INTS);
  a.mutable_ints()->Add(values.begin(), values.end());
}

std::span<const uint8_t> span_of(const std::string& bytes) {
  return {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()};
}

// The refusal, or "taken".
std::string refusal_of(const std::string& bytes, const ImportOptions& options = {}) {
  try {
    import_model(span_of(bytes), options);
    return "taken";
  } catch (const Refused& refused) {
    return refused.what();
  }
}

ModelFile small_network() {
  ModelFile file;
  file.input("x", {1, 2, 4, 3}).output("y");
  file.floats("w", {3, 2, 2, 2}, std::vector<float>(24, 0.5F)).floats("b", {3}, {1, 2, 3});
  set_ints(file.node("Conv", {"x", "w", "b"}, "c"), "pads", {0, 1, 1, 0});
  file.node("Relu", {"c"}, "r");
  file.node("GlobalAveragePool", {"r"}, "g");
  file.node("Flatten", {"g"}, "y");
  return file;
}

TEST(OnnxReader, AllRefusalsComeAtOnceWithAWayOut) {
  ModelFile file;
  file.input("x", {1, 2, 5}).output("z");
  file.node("NonMaxSuppression", {"x"}, "a");
  file.node("TopK", {"x"}, "k");
  set_ints(file.node("MaxPool", {"x"}, "m"), "kernel_shape", {2});
  set_ints(*file.proto().mutable_graph()->mutable_node(2), "dilations", {2});
  file.node("Relu", {"a"}, "z");
  EXPECT_EQ(refusal_of(file.bytes()),
            "NonMaxSuppression 'a_node': the operator is not available; end the network before it "
            "and select boxes in the application\n"
            "TopK 'k_node': the operator is not available; end the network before it; the largest "
            "outputs are the application's to find\n"
            "MaxPool 'm_node': dilated pooling is not available; dilations of 1 are");
}

TEST(OnnxReader, OpenBatchIsOneAndOtherSizesAreAskedFor) {
  ModelFile file;
  file.input("x", {-1, 3, -2}).output("y");
  file.node("Relu", {"x"}, "y");
  EXPECT_EQ(refusal_of(file.bytes()),
            "input 'x': its dimension open2 is open; give it with --input-dim open2=...");
  ImportOptions options;
  options.read.input_dims["open2"] = 5;
  const Imported imported = import_model(span_of(file.bytes()), options);
  EXPECT_EQ(imported.network->inputs[0].shape, (Shape{1, 3, 5}));
}

TEST(OnnxReader, FrozenInputsAreConstants) {
  ModelFile file;
  file.input("x", {2, 6}).input("shape", {2}, onnx::TensorProto::INT64).output("y");
  file.node("Reshape", {"x", "shape"}, "y");
  EXPECT_EQ(refusal_of(file.bytes()).find("--freeze shape=..."),
            std::string("Reshape 'y_node': shape must be known at import; give it with ").size());
  ImportOptions options;
  options.read.freeze_text["shape"] = "3,-1";
  EXPECT_EQ(import_model(span_of(file.bytes()), options).network->outputs[0].shape, (Shape{3, 4}));
  options.read.freeze_text["shape"] = "three";
  EXPECT_NE(refusal_of(file.bytes(), options), "taken");
}

TEST(OnnxReader, EquationsOfEinsumAreLookedThrough) {
  const auto taken = [](const char* equation) {
    ModelFile file;
    file.input("x", {2, 3, 4}).input("w", {4, 3}).output("y");
    onnx::AttributeProto& a = *file.node("Einsum", {"x", "w"}, "y").add_attribute();
    a.set_name("equation");
    a.set_type(onnx::AttributeProto::STRING);
    a.set_s(equation);
    return refusal_of(file.bytes()) == "taken";
  };
  EXPECT_TRUE(taken("abc,cb->a"));
  EXPECT_TRUE(taken(" ...c, cd -> d..."));
  EXPECT_TRUE(taken("abc,cd"));
  for (const char* wrong : {"", "abc", "ab,cd->a", "abc,cd->e", "abc,cd->aa", "abc,cd,e->a",
                            "aba,cd->a", "abc,bd->a", "a......,cd->a", "abc,cd-"}) {
    EXPECT_FALSE(taken(wrong)) << wrong;
  }
}

TEST(OnnxReader, IntegersThatAreNoNumbersAreRefused) {
  for (const float zero_point : {NAN, HUGE_VALF, -1e19F}) {
    ModelFile file;
    file.input("x", {2}).output("y").floats("s", {}, {0.5F}).floats("z", {}, {zero_point});
    file.node("QuantizeLinear", {"x", "s", "z"}, "y");
    EXPECT_NE(refusal_of(file.bytes()).find("which is no integer"), std::string::npos);
  }
}

TEST(OnnxReader, NewerVersionsStillLoad) {
  ModelFile file = small_network();
  file.proto().set_ir_version(99);
  file.proto().mutable_opset_import(0)->set_version(40);
  EXPECT_EQ(refusal_of(file.bytes()), "taken");
}

TEST(OnnxReader, HugeNegativeAndMissing) {
  const auto reshaped = [](std::vector<int64_t> shape) {
    ModelFile file;
    file.input("x", std::move(shape)).output("y");
    file.node("Relu", {"x"}, "y");
    return refusal_of(file.bytes());
  };
  EXPECT_EQ(reshaped({1, int64_t{1} << 40}), "a tensor of more than 67108864 elements");
  EXPECT_EQ(reshaped({1, 65536, 65536, 65536, 65536}), "a tensor of more than 67108864 elements");
  EXPECT_NE(reshaped({1, 0, 4}), "taken");

  ModelFile expanded;
  expanded.input("x", {1}).output("y").floats("a", {1}, {1});
  onnx::TensorProto& shape = *expanded.proto().mutable_graph()->add_initializer();
  shape.set_name("s");
  shape.set_data_type(onnx::TensorProto::INT64);
  shape.add_dims(2);
  shape.add_int64_data(4096);
  shape.add_int64_data(4096);
  expanded.node("Expand", {"a", "s"}, "e");
  expanded.node("Mul", {"x", "e"}, "y");
  EXPECT_EQ(refusal_of(expanded.bytes()),
            "Expand 'e_node': a computed constant of more than 4194304 elements");

  ModelFile cyclic;
  cyclic.input("x", {2}).output("b");
  cyclic.node("Add", {"x", "b"}, "a");
  cyclic.node("Relu", {"a"}, "b");
  EXPECT_EQ(refusal_of(cyclic.bytes()), "Add 'a_node': nothing before it writes its input 'b'");

  ModelFile twice;
  twice.input("x", {2}).output("a");
  twice.node("Neg", {"x"}, "a");
  twice.node("Relu", {"x"}, "a");
  EXPECT_EQ(refusal_of(twice.bytes()), "Relu 'a_node': its output 'a' is written twice");

  ModelFile lying = small_network();
  lying.proto().mutable_graph()->mutable_initializer(0)->set_dims(0, 4);
  EXPECT_EQ(refusal_of(lying.bytes()), "tensor 'w': 96 bytes of data for 32 elements");
}

// Every prefix and many flipped bytes: a network or a refusal.
TEST(OnnxReader, DamagedFilesAreRefusedOrTaken) {
  const std::string whole = small_network().bytes();
  ASSERT_EQ(refusal_of(whole), "taken");
  for (size_t size = 0; size < whole.size(); ++size) {
    refusal_of(whole.substr(0, size));
  }
  std::mt19937 random(1);
  for (int i = 0; i < 3000; ++i) {
    std::string damaged = whole;
    for (int flips = 0; flips <= i % 3; ++flips) {
      damaged[random() % damaged.size()] ^= static_cast<char>(1U << random() % 8);
    }
    refusal_of(damaged);
  }
}

}  // namespace
}  // namespace nnlib::importer
