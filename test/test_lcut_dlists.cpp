// SPDX-License-Identifier: MIT
// The intrusive list.
#include "test/fixture.hpp"

namespace {

struct Item {
  int32_t value;
  ai_dlist node;
};

// Five items, 0 to 4, and two lists; list a starts with the first ones.
struct Lists {
  explicit Lists(int32_t listed) {
    ai_dlist_init(&a);
    ai_dlist_init(&b);
    for (int32_t i = 0; i < 5; ++i) {
      items[i].value = i;
      if (i < listed) {
        ai_dlist_push_back(&a, node(i));
      }
    }
  }
  ai_dlist* node(int32_t i) { return &items[i].node; }

  ai_dlist a;
  ai_dlist b;
  Item items[5];
};

// The list holds these values, in whichever direction it is walked.
void check_list(lcut_case* tc, const ai_dlist& head, std::initializer_list<int32_t> expected,
                Site site = CALLING_SITE) {
  const int64_t count = static_cast<int64_t>(expected.size());
  check_equal(tc, {count, count == 0}, {ai_dlist_count(&head), ai_dlist_empty(&head)}, site);
  const ai_dlist* forward = head.next;
  const ai_dlist* backward = head.prev;
  for (int64_t i = 0; i < count; ++i, forward = forward->next, backward = backward->prev) {
    check_equal(tc, {expected.begin()[i], expected.begin()[count - 1 - i]},
                {AI_DLIST_ENTRY(forward, const Item, node)->value,
                 AI_DLIST_ENTRY(backward, const Item, node)->value},
                site);
  }
  check_equal(tc, {true, true}, {forward == &head, backward == &head}, site);
}

}  // namespace

CASE(tc_ai_dlist_basic_checks) {
  Lists l(0);
  check_list(tc, l.a, {});
  ai_dlist_push_back(&l.a, l.node(0));
  check_list(tc, l.a, {0});
  ai_dlist_unlink(l.node(0));
  check_list(tc, l.a, {});
  for (int32_t i = 0; i < 4; ++i) {
    ai_dlist_push_back(&l.a, l.node(i));
  }
  check_list(tc, l.a, {0, 1, 2, 3});
  ai_dlist_unlink(l.node(1));
  check_list(tc, l.a, {0, 2, 3});
}

CASE(tc_ai_dlist_move_checks) {
  Lists l(4);
  ai_dlist_move_back(&l.b, l.node(1));
  ai_dlist_move_back(&l.b, l.node(3));
  ai_dlist_move_front(&l.b, l.node(0));
  check_list(tc, l.a, {2});
  check_list(tc, l.b, {0, 1, 3});
  ai_dlist_move_front(&l.b, l.node(3));  // within its own list
  check_list(tc, l.b, {3, 0, 1});
}

CASE(tc_ai_dlist_extended_checks) {
  Lists l(3);
  ai_dlist_push_front(&l.b, l.node(3));
  ai_dlist_push_front(&l.b, l.node(4));
  ai_dlist_splice_back(&l.a, &l.b);
  check_list(tc, l.a, {0, 1, 2, 4, 3});
  check_list(tc, l.b, {});
  ai_dlist_splice_back(&l.a, &l.b);  // nothing to move
  check_list(tc, l.a, {0, 1, 2, 4, 3});
  ai_dlist_splice_back(&l.b, &l.a);  // into an empty list
  check_list(tc, l.b, {0, 1, 2, 4, 3});
  ai_dlist_move_front(&l.a, l.node(3));
  ai_dlist_splice_back(&l.b, &l.a);  // one node
  check_list(tc, l.b, {0, 1, 2, 4, 3});
  check_list(tc, l.a, {});
  int32_t order = 0;
  AI_DLIST_FOR_EACH(node, &l.b) {
    order = order * 10 + AI_DLIST_ENTRY(node, Item, node)->value;
  }
  AI_DLIST_FOR_EACH_BACKWARD(node, &l.b) {
    order -= AI_DLIST_ENTRY(node, Item, node)->value;
  }
  LCUT_INT_EQUAL(tc, 1243 - 10, order);
}

SUITE(test_lcut_dlists, "test_lcut_dlists test unit", ENTRY(tc_ai_dlist_basic_checks),
      ENTRY(tc_ai_dlist_move_checks), ENTRY(tc_ai_dlist_extended_checks))
