// SPDX-License-Identifier: MIT
// As much of GoogleTest's interface as the kernels' sweeps use, for boards that it does not run on.
// A failed check is counted and named by its line; messages are dropped.
#ifndef TEST_BOARD_SWEEPS_GTEST_H
#define TEST_BOARD_SWEEPS_GTEST_H

#include <cstdio>

namespace testing {

class Test {
 public:
  virtual ~Test() = default;
  virtual void TestBody() = 0;
};

template <class... T>
struct Types {};

struct Message {
  template <class T>
  const Message& operator<<(const T&) const {
    return *this;
  }
};

struct Registered {
  Registered(const char* test, void (*function)()) : name(test), run(function), next(first) {
    first = this;
  }
  const char* name;
  void (*run)();
  Registered* next;
  static inline Registered* first = nullptr;
  static inline int failures = 0;
};

inline bool passed(bool equal, const char* file, int line) {
  if (!equal && ++Registered::failures <= 20) {
    std::printf("%s:%d: failed\n", file, line);
  }
  return equal;
}

struct Nothing {
  void operator=(const Message&) const {}
};

template <class T>
const char* PrintToString(const T&) {
  return "";
}

template <template <class> class Fixture, class... T>
void run_typed(Types<T...>) {
  (Fixture<T>().TestBody(), ...);
}

}  // namespace testing

#define EXPECT_EQ(a, b)                                    \
  if (::testing::passed((a) == (b), __FILE__, __LINE__)) { \
  } else                                                   \
    ::testing::Nothing() = ::testing::Message()
#define ASSERT_EQ(a, b)                                    \
  if (::testing::passed((a) == (b), __FILE__, __LINE__)) { \
  } else                                                   \
    return ::testing::Nothing() = ::testing::Message()
#define ASSERT_TRUE(a) ASSERT_EQ(static_cast<bool>(a), true)
#define EXPECT_TRUE(a) EXPECT_EQ(static_cast<bool>(a), true)
#define EXPECT_LE(a, b) EXPECT_EQ((a) <= (b), true)
#define ASSERT_NE(a, b) ASSERT_EQ((a) != (b), true)
#define SCOPED_TRACE(message) static_cast<void>(0)

#define TEST(suite, name)                                                                     \
  static void suite##_##name();                                                               \
  static ::testing::Registered suite##_##name##_registered(#suite "." #name, suite##_##name); \
  static void suite##_##name()
#define TYPED_TEST_SUITE(suite, types) using suite##_types = types
#define TYPED_TEST(suite, name)                                                         \
  template <class TypeParam>                                                            \
  struct suite##_##name : suite<TypeParam> {                                            \
    void TestBody() override;                                                           \
  };                                                                                    \
  static ::testing::Registered suite##_##name##_registered(                             \
      #suite "." #name, [] { ::testing::run_typed<suite##_##name>(suite##_types()); }); \
  template <class TypeParam>                                                            \
  void suite##_##name<TypeParam>::TestBody()

#endif
