// SPDX-License-Identifier: MIT
// Runs a network in memory, on the records and addresses that are printed.
#ifndef NNLIB_IMPORTER_RUN_RUNNER_HPP
#define NNLIB_IMPORTER_RUN_RUNNER_HPP

#include <functional>

#include "importer/run/memory.hpp"

namespace nnlib::importer {

class Runner {
 public:
  // Binds the network's tensors to an arena of its own; the network has to outlive the runner.
  Runner(Network& network, const MemoryMap& memory);

  // What the runtime's checker says about the records; nothing when they are sound.
  std::vector<std::string> findings();

  // Called after each layer; the elements of its outputs are in place.
  using Observer = std::function<void(const Layer&)>;

  // The bytes of every output, from the bytes of every input. Throws std::runtime_error when the
  // number or the size of the inputs is wrong or the runtime reports an error.
  std::vector<Bytes> run(const std::vector<Bytes>& inputs, const Observer& observer = {});

 private:
  std::vector<Bytes> run_layers(const std::vector<Bytes>& inputs, const Observer& observer);

  Network& network_;
  std::vector<uint64_t> arena_;
};

// Bytes of a port's elements.
size_t port_bytes(const Port& port);

}  // namespace nnlib::importer

#endif
