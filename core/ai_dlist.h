/* SPDX-License-Identifier: MIT */
/* An intrusive, circular, doubly-linked list.
 *
 * A list is a head node; an empty head points to itself. Nodes are embedded in the user's records
 * and never allocated here. All operations take constant time but ai_dlist_count.
 */
#ifndef NNLIB_CORE_AI_DLIST_H
#define NNLIB_CORE_AI_DLIST_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ai_dlist {
  struct ai_dlist* next;
  struct ai_dlist* prev;
} ai_dlist;

/* The record of the given type that holds *node as its member. */
#define AI_DLIST_ENTRY(node, type, member) ((type*)(void*)((char*)(node)-offsetof(type, member)))

/* Visits every node forward or backward; the list must not change during the walk. */
#define AI_DLIST_FOR_EACH(node, head) \
  for (ai_dlist* node = (head)->next; node != (head); node = node->next)
#define AI_DLIST_FOR_EACH_BACKWARD(node, head) \
  for (ai_dlist* node = (head)->prev; node != (head); node = node->prev)

/* Makes head an empty list. */
static inline void ai_dlist_init(ai_dlist* head) {
  head->next = head;
  head->prev = head;
}

/* True when the list has no node. */
static inline bool ai_dlist_empty(const ai_dlist* head) {
  return head->next == head;
}

/* The number of nodes, found by a walk. */
static inline uint32_t ai_dlist_count(const ai_dlist* head) {
  uint32_t count = 0;
  for (const ai_dlist* node = head->next; node != head; node = node->next) {
    ++count;
  }
  return count;
}

/* Inserts node after the given head or node. */
static inline void ai_dlist_push_front(ai_dlist* head, ai_dlist* node) {
  node->next = head->next;
  node->prev = head;
  head->next->prev = node;
  head->next = node;
}

/* Inserts node before the given head or node. */
static inline void ai_dlist_push_back(ai_dlist* head, ai_dlist* node) {
  ai_dlist_push_front(head->prev, node);
}

/* Takes node out of its list; the node itself then is an empty list. */
static inline void ai_dlist_unlink(ai_dlist* node) {
  node->prev->next = node->next;
  node->next->prev = node->prev;
  ai_dlist_init(node);
}

/* Moves node from its list to the front or back of another. */
static inline void ai_dlist_move_front(ai_dlist* head, ai_dlist* node) {
  ai_dlist_unlink(node);
  ai_dlist_push_front(head, node);
}
static inline void ai_dlist_move_back(ai_dlist* head, ai_dlist* node) {
  ai_dlist_unlink(node);
  ai_dlist_push_back(head, node);
}

/* Moves all nodes of from, in order, to the back of head; from becomes empty. */
static inline void ai_dlist_splice_back(ai_dlist* head, ai_dlist* from) {
  if (ai_dlist_empty(from)) {
    return;
  }
  from->next->prev = head->prev;
  head->prev->next = from->next;
  from->prev->next = head;
  head->prev = from->prev;
  ai_dlist_init(from);
}

#ifdef __cplusplus
}
#endif

#endif
