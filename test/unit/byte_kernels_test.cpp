// SPDX-License-Identifier: MIT
// Pooling, addition and functions of bytes against their formulas, over runs and channels at the
// edges of the kernels' blocks; small enough for boards.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "kernels/ko_add.h"
#include "kernels/ko_pool.h"
#include "layers_quantized/layers_nl_quarn_integer.h"
#include "layers_quantized/layers_pool_quarn_fixed.h"
#include "test/unit/integer_data.hpp"

namespace {

// A vector with elements behind it that nobody may write.
template <class T>
class Guarded {
 public:
  explicit Guarded(size_t count) : all_(count + kGuard, T{77}) {}
  T* data() { return all_.data(); }
  bool operator==(const std::vector<T>& want) const {
    return std::equal(want.begin(), want.end(), all_.begin(), all_.end() - kGuard) &&
           std::all_of(all_.end() - kGuard, all_.end(), [](T x) { return x == 77; });
  }

 private:
  static constexpr int kGuard = 16;
  std::vector<T> all_;
};

// Numbers of the whole range, or of its ends: channel by channel of the least only, of the greatest
// only, mostly of the least, mostly of the greatest.
template <class T>
std::vector<T> numbers(size_t count, uint16_t channels, bool ends) {
  auto values = random_vector<T>(count);
  const size_t first = random_bits() % 4;
  for (size_t i = 0; ends && i < count; ++i) {
    using Limits = std::numeric_limits<T>;
    const size_t kind = (first + i % channels) % 4;
    const bool other = kind >= 2 && values[i] % 8 == 0;
    values[i] = (kind % 2 != 0) != other ? Limits::max() : Limits::min();
  }
  return values;
}

template <class T>
T saturated(long value) {
  using Limits = std::numeric_limits<T>;
  return static_cast<T>(std::clamp<long>(value, Limits::min(), Limits::max()));
}

// What quantizations have in common.
struct Same {
  bool scales, zeros;
  constexpr bool all() const { return scales && zeros; }
};
constexpr Same kSame[] = {{false, false}, {true, false}, {false, true}, {true, true}};

// --- pooling --------------------------------------------------------------------------------

struct Pooling {
  uint16_t in_w, in_h, pool_w, pool_h, pad_x, pad_y, stride_x, stride_y, out_w, out_h;
};
// Windows outside the map and cut by its edges; more cells, or columns, than narrow sums take.
constexpr Pooling kPoolings[] = {
    {5, 4, 3, 2, 4, 1, 2, 1, 5, 4},     {7, 6, 3, 3, 1, 1, 1, 1, 7, 6},
    {8, 6, 2, 2, 0, 0, 2, 2, 4, 3},     {6, 5, 4, 4, 1, 1, 1, 1, 5, 4},
    {13, 12, 13, 12, 0, 1, 1, 1, 1, 2}, {130, 2, 129, 2, 1, 0, 1, 1, 3, 1},
    {47, 46, 46, 46, 1, 0, 1, 1, 3, 1}};

// finish(cells) for each output of a pooling.
template <class T, class Finish>
std::vector<T> pooled(const Pooling& p, uint16_t channels, const std::vector<T>& in,
                      const Finish& finish) {
  std::vector<T> out;
  for (int i = 0; i < p.out_w * p.out_h * channels; ++i) {
    const int x = i / channels % p.out_w * p.stride_x - p.pad_x;
    const int y = i / channels / p.out_w * p.stride_y - p.pad_y;
    std::vector<int> cells;
    for (int row = std::max(y, 0); row < std::min(y + p.pool_h, int{p.in_h}); ++row) {
      for (int column = std::max(x, 0); column < std::min(x + p.pool_w, int{p.in_w}); ++column) {
        cells.push_back(in[static_cast<size_t>((row * p.in_w + column) * channels + i % channels)]);
      }
    }
    out.push_back(finish(cells));
  }
  return out;
}

template <class Check>
void for_poolings(const Check& check) {
  for (const Pooling& p : kPoolings) {
    for (const uint16_t channels : {1, 7, 8, 9, 15, 16, 17, 35}) {
      if (p.in_w < 40 || channels == 9) {
        check(p, channels, channels % 2 == 1);
      }
    }
  }
}

template <class T, class Kernel>
void check_pool(Kernel kernel, bool average, Same same) {
  for_poolings([=](const Pooling& p, uint16_t channels, bool ends) {
    const auto in = numbers<T>(size_t{p.in_w} * p.in_h * channels, channels, ends);
    const float in_scale = 0.05f, out_scale = same.scales ? 0.05f : 0.037f;
    const T in_zero = static_cast<T>(-60), out_zero = same.zeros ? in_zero : T{21};
    const auto want = pooled<T>(p, channels, in, [=](const std::vector<int>& cells) {
      if (cells.empty()) {
        return out_zero;
      }
      int sum = 0;
      for (int cell : cells) {
        sum += cell;
      }
      const int count = static_cast<int>(cells.size());
      const int maximum = *std::max_element(cells.begin(), cells.end());
      if (same.all()) {
        return static_cast<T>(average ? (sum + count / 2) / count : maximum);
      }
      const float m = average ? static_cast<float>(sum) / static_cast<float>(count)
                              : static_cast<float>(maximum);
      const float value =
          (m - static_cast<float>(in_zero)) * (in_scale / out_scale) + static_cast<float>(out_zero);
      return saturated<T>(
          static_cast<long>(value + (std::is_signed_v<T> && value < 0 ? -0.5f : 0.5f)));
    });
    Guarded<T> out(want.size());
    kernel(in.data(), out.data(), p.in_w, p.in_h, channels, p.pool_w, p.pool_h, p.pad_x, p.pad_y,
           p.stride_x, p.stride_y, p.out_w, p.out_h, in_scale, in_zero, out_scale, out_zero);
    ASSERT_EQ(out == want, true) << channels << " of " << p.pool_w;
  });
}

TEST(BytePool, EqualsTheFormula) {
  for (Same same : kSame) {
    check_pool<uint8_t>(ko_uint8_maxpool, false, same);
    check_pool<uint8_t>(ko_uint8_avepool, true, same);
    check_pool<int8_t>(ko_int8_maxpool, false, same);
    check_pool<int8_t>(ko_int8_avepool, true, same);
  }
}

template <class T>
void check_fixed_pool(ai_array_format format) {
  for_poolings([=](const Pooling& p, uint16_t channels, bool ends) {
    auto in = numbers<T>(size_t{p.in_w} * p.in_h * channels, channels, ends);
    for (const bool average : {false, true}) {
      const auto want = pooled<T>(p, channels, in, [=](const std::vector<int>& cells) {
        if (cells.empty()) {
          return average ? T{0} : std::numeric_limits<T>::min();
        }
        int64_t sum = 0;
        for (int cell : cells) {
          sum += cell;
        }
        const auto count = static_cast<int64_t>(cells.size());
        return static_cast<T>(average ? (sum + (sum < 0 ? -(count / 2) : count / 2)) / count
                                      : *std::max_element(cells.begin(), cells.end()));
      });
      Guarded<T> got(want.size());
      ai_array from = {format, static_cast<ai_size>(in.size()), in.data(), in.data()};
      ai_array out = {format, static_cast<ai_size>(want.size()), got.data(), got.data()};
      (average ? pool_func_ap_array_fixed : pool_func_mp_array_fixed)(
          &from, p.in_w, p.in_h, channels, p.pool_w, p.pool_h, p.pad_x, p.pad_y, p.stride_x,
          p.stride_y, p.out_w, p.out_h, &out);
      ASSERT_EQ(got == want, true) << channels << " of " << p.pool_w;
    }
  });
}

TEST(FixedPool, EqualsTheFormula) {
  check_fixed_pool<int8_t>(AI_ARRAY_FORMAT_MAKE_Q(8, 5));
  check_fixed_pool<int16_t>(AI_ARRAY_FORMAT_MAKE_Q(16, 10));
}

// --- addition -------------------------------------------------------------------------------

// The sums of all pairs of bytes, and of runs that end anywhere.
template <class T, class Kernel>
void check_sums(Kernel kernel, const float (&scales)[3], Same same) {
  const T zeros[3] = {10, static_cast<T>(same.zeros ? 10 : 90),
                      static_cast<T>(same.zeros ? 10 : 33)};
  std::vector<T> a(65536), b(65536), want(65536);
  for (uint32_t i = 0; i < 65536; ++i) {
    a[i] = static_cast<T>(i);
    b[i] = static_cast<T>(i >> 8);
    const int x = a[i] - zeros[0], y = b[i] - zeros[1];
    float sum = static_cast<float>(y) * (scales[1] / scales[2]) +
                static_cast<float>(x) * (scales[0] / scales[2]);
    sum += std::is_signed_v<T> ? static_cast<float>(zeros[2]) : static_cast<float>(zeros[2]) + 0.5f;
    if (std::is_signed_v<T>) {
      sum += sum > 0 ? 0.5f : -0.5f;
    }
    const bool exact = scales[0] == scales[1] && scales[0] == scales[2] && same.zeros;
    const float within = std::clamp(std::isnan(sum) ? 0.0f : sum, -1000.0f, 1000.0f);
    want[i] = saturated<T>(exact ? x + y + zeros[2] : static_cast<long>(within));
  }
  const auto check = [&](uint32_t first, uint32_t count) {
    Guarded<T> out(count);
    kernel(&a[first], &b[first], out.data(), count, scales[0], zeros[0], scales[1], zeros[1],
           scales[2], zeros[2]);
    ASSERT_EQ(out == std::vector<T>(&want[first], &want[first] + count), true)
        << scales[1] << " from " << first << ", " << count;
  };
  check(0, 65536);
  for (uint32_t count = 0; count < 36; ++count) {
    check(30000 + 3 * count, count);
  }
}

TEST(ByteAdd, OfAllPairsEqualsTheFormula) {
  const float scales[][3] = {{0.05f, 0.05f, 0.05f},    {0.05f, 0.031f, 0.077f},
                             {0.05f, 1e-39f, 0.05f},   {3e-38f, 2.9e-38f, 1.0f},
                             {1e-30f, 3e38f, 1e-6f},   {0.5f, 0.25f, 0.5f},
                             {2e-39f, 1e-39f, 3e-39f}, {0.1f, -0.1f, 0.3f}};
  for (const auto& of : scales) {
    for (const Same same : {Same{true, false}, Same{true, true}}) {
      check_sums<uint8_t>(ko_uint8_add, of, same);
      check_sums<int8_t>(ko_int8_add, of, same);
    }
  }
}

// --- functions ------------------------------------------------------------------------------

// Into another array and in place.
template <class T, class Formula>
void check_function(ai_nl_func function, const std::vector<T>& params, const Formula& formula) {
  const ai_array_format format = std::is_signed_v<T> ? AI_ARRAY_FORMAT_S8 : AI_ARRAY_FORMAT_U8;
  for (const uint32_t count : {0, 1, 3, 4, 7, 15, 16, 17, 31, 33, 256}) {
    std::vector<T> in(count), want(count);
    for (uint32_t i = 0; i < count; ++i) {
      in[i] = static_cast<T>(7 * i + count);
    }
    std::transform(in.begin(), in.end(), want.begin(), formula);
    Guarded<T> got(count), same(count);
    std::copy(in.begin(), in.end(), same.data());
    for (Guarded<T>* out : {&got, &same}) {
      const ai_array from = {format, count, in.data(), out == &got ? in.data() : out->data()};
      ai_array to = {format, count, out->data(), out->data()};
      function(&to, &from, count, params.data());
      ASSERT_EQ(*out == want, true) << count;
    }
  }
}

template <class T>
void check_functions() {
  const T low = static_cast<T>(-50), high = static_cast<T>(-9);
  const auto table = random_vector<T>(256);
  check_function<T>(nl_func_relu_array_integer, {low}, [=](T x) { return std::max(x, low); });
  check_function<T>(nl_func_clip_array_integer, {low, high},
                    [=](T x) { return std::min(std::max(x, low), high); });
  check_function<T>(nl_func_array_integer, table, [&](T x) {
    return table[static_cast<size_t>(x - std::numeric_limits<T>::min())];
  });
}

TEST(ByteFunctions, AreTheFormulas) {
  check_functions<uint8_t>();
  check_functions<int8_t>();
}

}  // namespace
