// SPDX-License-Identifier: MIT
#include "check/data_flow.hpp"

#include <initializer_list>

#include "check/layer_check.hpp"
#include "check/public_functions.hpp"
#include "check/walk.hpp"

namespace nnlib {
namespace {

constexpr uint32_t kNobody = AI_CHECK_NO_LAYER;
constexpr uint32_t kCaller = AI_CHECK_NO_LAYER - 1;  // the network's inputs

// A tensor somewhere in the network.
struct TensorUse {
  const ai_tensor* tensor;
  TensorName name;
  uint32_t layer;
};

// Calls visit(tensor use) for the sound tensors of a list.
template <class Visit>
void visit_list(const ai_tensor_chain* chain, uint32_t list, uint32_t layer, Visit visit) {
  const ai_tensor_list* tensors = ai_tensor_chain_list(chain, list);
  const uint32_t size = tensors != nullptr && tensors->tensors != nullptr ? tensors->size : 0;
  for (uint32_t i = 0; i < size; ++i) {
    if (is_sound(tensors->tensors[i])) {
      visit(TensorUse{tensors->tensors[i], {list, i}, layer});
    }
  }
}

// The same for one layer, and for the layers inside it but for the ends that stand in for its own.
template <class Visit>
void visit_layer(const ai_layer& layer, uint32_t list, uint32_t place, Visit visit) {
  visit_list(layer.tensor_chain, list, place, visit);
  if (!is_layer(layer, forward_time_distributed, AI_LAYER_TYPE_TIME_DISTRIBUTED)) {
    return;
  }
  const auto& outer = reinterpret_cast<const ai_layer_time_distributed&>(layer);
  const uint32_t count = length_of(Walk(outer.inner)).layers;
  Walk walk(outer.inner);
  for (uint32_t i = 0; i < count; ++i, walk.step()) {
    visit_list(walk.layer()->tensor_chain, list, place, [&](const TensorUse& use) {
      const bool stand_in = use.name.index == 0 && ((list == AI_CHAIN_INPUT && i == 0) ||
                                                    (list == AI_CHAIN_OUTPUT && i + 1 == count));
      if (!stand_in) {
        visit(use);
      }
    });
  }
}

// Whether a layer multiplies its input in place: float to fixed point with integer bits.
bool rescales_input(const ai_layer& layer) {
  const ai_tensor* in = ai_tensor_chain_input(layer.tensor_chain, 0);
  const ai_tensor* out = ai_tensor_chain_output(layer.tensor_chain, 0);
  if (!is_sound(in) || !is_sound(out)) {
    return false;
  }
  const ai_array_format from = in->data->format;
  const ai_array_format to = out->data->format;
  if (is_layer(layer, node_convert, AI_LAYER_TYPE_NL)) {
    return ai_fmt_get_type_id(from) == AI_FORMAT_TYPE_FLOAT && out->klass == nullptr &&
           ai_fmt_get_ibits(to) != 0;
  }
  return is_layer(layer, node_convert_fixed, AI_LAYER_TYPE_NL) &&
         ai_fmt_get_bits(from) != ai_fmt_get_bits(to) &&
         ai_fmt_get_ibits(from) > ai_fmt_get_ibits(to);
}

class DataFlow {
 public:
  DataFlow(const Scope& scope, uint32_t layers, Report& report)
      : scope_(scope), layers_(layers), report_(report), routed_(has_routing()) {}

  void check() {
    each_layer([this](const ai_layer& layer, uint32_t place) { check_layer(layer, place); });
    report_.enter({});
    each_io(AI_CHAIN_INPUT, [this](const TensorUse& use) { check_network_input(use); });
    each_io(AI_CHAIN_OUTPUT, [this](const TensorUse& use) { check_network_output(use); });
  }

 private:
  // What became of the memory of a tensor before a layer reads it.
  struct History {
    uint32_t writer = kNobody;
    uint32_t spoiler = kNobody;
    TensorName spoiled_by = {0, 0};
  };

  template <class Visit>
  void each_layer(Visit visit) const {
    Walk walk(scope_.network.layers);
    for (uint32_t place = 0; place < layers_; ++place, walk.step()) {
      visit(*walk.layer(), place);
    }
  }
  template <class Visit>
  void each_io(uint32_t list, Visit visit) const {
    visit_list(&scope_.network.io, list, kCaller, visit);
  }
  // Calls visit(use) for everything that layers write, in the order of running; before and after
  // give the range of places.
  template <class Visit>
  void each_write(uint32_t first, uint32_t end, Visit visit) const {
    each_layer([&](const ai_layer& layer, uint32_t place) {
      if (place < first || place >= end) {
        return;
      }
      if (rescales_input(layer)) {
        visit_list(layer.tensor_chain, AI_CHAIN_INPUT, place, visit);
      }
      visit_layer(layer, AI_CHAIN_SCRATCH, place, visit);
      visit_layer(layer, AI_CHAIN_OUTPUT, place, visit);
    });
  }

  bool has_routing() const {
    bool found = false;
    each_layer([&](const ai_layer& layer, uint32_t) {
      found = found || is_layer(layer, forward_split, AI_LAYER_TYPE_SPLIT) ||
              is_layer(layer, forward_add, AI_LAYER_TYPE_ADD);
    });
    return found;
  }

  static bool same(const TensorUse& a, const TensorUse& b) {
    return a.tensor == b.tensor || a.tensor->data == b.tensor->data;
  }

  Memory memory(const TensorUse& use) const {
    return use.name.list == AI_CHAIN_SCRATCH ? whole_memory_of(scope_, *use.tensor)
                                             : memory_of(scope_, *use.tensor);
  }

  bool is_output(const TensorUse& write) const { return write.name.list == AI_CHAIN_OUTPUT; }

  // Whether an earlier layer or the caller writes this very tensor, not only its memory.
  bool written_by_name(const TensorUse& read) const {
    bool found = false;
    each_io(AI_CHAIN_INPUT, [&](const TensorUse& input) { found = found || same(input, read); });
    each_write(0, read.layer, [&](const TensorUse& write) {
      found = found || (is_output(write) && same(write, read));
    });
    return found;
  }

  // Up to the layer that reads.
  History history_of(const TensorUse& read) const {
    const Memory needed = memory(read);
    const bool by_name = written_by_name(read);
    History history;
    const auto write_to = [&](const TensorUse& write) {
      const Memory to = memory(write);
      if (!to.overlaps(needed)) {
        return;
      }
      const bool result = write.layer == kCaller || is_output(write);
      const bool named = !by_name || same(write, read);
      if (result && named && to.covers(needed)) {
        history = {write.layer};
        return;
      }
      if (history.spoiler == kNobody) {
        history.spoiler = write.layer;
        history.spoiled_by = write.name;
      }
    };
    each_io(AI_CHAIN_INPUT, write_to);
    each_write(0, read.layer, write_to);
    return history;
  }

  // Whether what is read consists of smaller outputs, and inputs of the network, that nobody has
  // overwritten since.
  bool made_of_pieces(const TensorUse& read) const {
    const Memory needed = memory(read);
    uintptr_t intact = 0;
    const auto add = [&](const TensorUse& piece) {
      const Memory to = memory(piece);
      const bool from_caller = piece.layer == kCaller;
      bool kept = (from_caller || is_output(piece)) && needed.covers(to) && to.bytes < needed.bytes;
      if (kept) {
        each_write(from_caller ? 0 : piece.layer + 1, read.layer,
                   [&](const TensorUse& later) { kept = kept && !memory(later).overlaps(to); });
      }
      intact += kept ? to.bytes : 0;
    };
    each_io(AI_CHAIN_INPUT, add);
    each_write(0, read.layer, add);
    return intact == needed.bytes;
  }

  void say_spoiled(const TensorUse& read, const History& history) const {
    Finding finding(report_);
    finding << read.name;
    if (history.writer == kCaller) {
      finding << ", an input of the network,";
    } else if (history.writer != kNobody) {
      finding << ", written by layer " << history.writer << ',';
    }
    finding << " is overwritten by " << history.spoiled_by << " of layer " << history.spoiler;
  }

  // Of inputs and weights that nobody has written before: they are constants, if nobody does later.
  bool check_constant(const TensorUse& read) const {
    bool constant = true;
    each_write(read.layer, layers_, [&](const TensorUse& write) {
      if (constant && memory(write).overlaps(memory(read)) && write.layer != read.layer) {
        Finding(report_) << read.name << " is written only afterwards, by " << write.name
                         << " of layer " << write.layer;
        constant = false;
      }
    });
    return constant;
  }

  // Whether a layer or the caller has written what is read; says so when it is no longer there.
  bool check_read(const TensorUse& read) const {
    const History history = history_of(read);
    if (history.spoiler != kNobody) {
      if (!made_of_pieces(read)) {
        say_spoiled(read, history);
      }
      return true;
    }
    return history.writer != kNobody || !check_constant(read);
  }

  // A constant that its own layer overwrites is another one in the next run.
  void check_kept(const TensorUse& read) const {
    const History history = history_of(read);
    if (history.writer != kNobody || history.spoiler != kNobody) {
      return;
    }
    each_write(read.layer, read.layer + 1, [&](const TensorUse& write) {
      if (memory(write).overlaps(memory(read))) {
        Finding(report_) << read.name << " is a constant that " << write.name << " overwrites";
      }
    });
  }

  // An array of its own over memory that a network's input or output has only until a run points
  // that elsewhere.
  void check_left_behind(const TensorUse& use) const {
    const auto look = [&](const TensorUse& io) {
      const ai_array& bound = *io.tensor->data;
      if (!scope_.binds(bound) || bound.data == nullptr || same(io, use)) {
        return;
      }
      const Memory left = {&bound, reinterpret_cast<uintptr_t>(bound.data),
                           static_cast<uintptr_t>(run_bytes(bound.format, bound.size))};
      if (left.overlaps(memory(use))) {
        Finding(report_) << use.name << " lies in the memory of the network's " << io.name
                         << ", which a run points at the caller's: give them one array, or the"
                            " latter AI_FORMAT_FLAG_COPY";
      }
    };
    each_io(AI_CHAIN_INPUT, look);
    each_io(AI_CHAIN_OUTPUT, look);
  }

  void check_layer(const ai_layer& layer, uint32_t place) const {
    const LayerRule* rule = find_layer_rule(layer.forward);
    report_.enter({place, AI_CHECK_NO_LAYER, rule != nullptr ? rule->name : ""});
    for (const uint32_t list : {AI_CHAIN_INPUT, AI_CHAIN_OUTPUT}) {
      visit_list(layer.tensor_chain, list, place,
                 [this](const TensorUse& use) { check_left_behind(use); });
    }
    uint32_t inputs = 0;
    uint32_t fed = 0;
    visit_list(layer.tensor_chain, AI_CHAIN_INPUT, place, [&](const TensorUse& read) {
      ++inputs;
      fed += check_read(read) ? 1u : 0u;
    });
    visit_list(layer.tensor_chain, AI_CHAIN_WEIGHTS, place, [&](const TensorUse& read) {
      check_read(read);
      check_kept(read);
    });
    const bool linked = rule != nullptr && !routed_ && rule->in_place != InPlace::kNoTensors;
    if (linked && inputs != 0 && fed == 0) {
      Finding(report_) << "none of its " << inputs
                       << " inputs is written by an earlier layer or is an input of the network";
    } else {
      visit_list(layer.tensor_chain, AI_CHAIN_INPUT, place,
                 [&](const TensorUse& read) { check_kept(read); });
    }
    if (linked) {
      check_used(layer, place);
    }
  }

  // Some layer behind, or the network's caller, reads one of the outputs.
  void check_used(const ai_layer& layer, uint32_t place) const {
    uint32_t outputs = 0;
    bool used = false;
    visit_list(layer.tensor_chain, AI_CHAIN_OUTPUT, place, [&](const TensorUse& output) {
      ++outputs;
      used = used || is_read(output, place + 1);
      each_io(AI_CHAIN_OUTPUT,
              [&](const TensorUse& read) { used = used || memory(read).overlaps(memory(output)); });
    });
    if (outputs != 0 && !used) {
      Finding(report_) << "none of its " << outputs
                       << " outputs is read by a later layer or is an output of the network";
    }
  }

  // By a layer from `first` on.
  bool is_read(const TensorUse& output, uint32_t first) const {
    bool found = false;
    each_layer([&](const ai_layer& layer, uint32_t place) {
      const auto look = [&](const TensorUse& read) {
        found = found || memory(read).overlaps(memory(output));
      };
      if (place >= first && !found) {
        visit_layer(layer, AI_CHAIN_INPUT, place, look);
        visit_layer(layer, AI_CHAIN_WEIGHTS, place, look);
      }
    });
    return found;
  }

  void check_network_input(const TensorUse& input) const {
    bool passed_on = false;
    each_io(AI_CHAIN_OUTPUT, [&](const TensorUse& output) {
      passed_on = passed_on || memory(output).overlaps(memory(input));
    });
    if (!passed_on && !routed_ && !is_read(input, 0)) {
      Finding(report_) << input.name << " is read by none of the " << layers_ << " layers";
    }
  }

  void check_network_output(const TensorUse& output) const {
    const TensorUse read = {output.tensor, output.name, layers_};
    const History history = history_of(read);
    if (history.spoiler != kNobody) {
      if (!made_of_pieces(read)) {
        say_spoiled(output, history);
      }
    } else if (history.writer == kNobody && !routed_) {
      Finding(report_) << output.name << " is written by none of the " << layers_ << " layers";
    }
  }

  const Scope& scope_;
  uint32_t layers_;
  Report& report_;
  bool routed_;
};

}  // namespace

void check_data_flow(const Scope& scope, uint32_t layers, Report& report) {
  DataFlow(scope, layers, report).check();
}

}  // namespace nnlib
