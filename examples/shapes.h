/* SPDX-License-Identifier: MIT */
/* What shapes_float.c and shapes_int8.c share: sizes, pictures and the application around the
 * network. */
#ifndef EXAMPLES_SHAPES_H
#define EXAMPLES_SHAPES_H

#include <stdio.h>
#include <string.h>

#include "examples/weights/shapes_pictures.h"
#include "nnlib.h"

enum {
  WIDTH = 16,
  HEIGHT = 12,
  KERNEL = 3,
  FILTERS = 6,
  POOL = 2,
  POOLED_WIDTH = WIDTH / POOL,
  POOLED_HEIGHT = HEIGHT / POOL,
  SMALL_WIDTH = POOLED_WIDTH / 2,
  SMALL_HEIGHT = POOLED_HEIGHT / 2,
  FEATURES = SMALL_WIDTH * SMALL_HEIGHT * FILTERS,
  CLASSES = 3,
  PICTURES = sizeof(pictures) / sizeof(*pictures) / HEIGHT
};

/* Prints the shares that the network gives to one picture; 0 on success. */
static int classify(ai_handle handle, const char* const* picture_rows) {
  static const char ink[] = " .+*#"; /* in quarters */
  static const char* const names[CLASSES] = {"disc", "ring", "cross"};
  static float pixels[HEIGHT][WIDTH];
  static float result[CLASSES];
  const ai_buffer in = {AI_BUFFER_FORMAT_FLOAT, 1, HEIGHT, WIDTH, 1, pixels, NULL};
  const ai_buffer out = {AI_BUFFER_FORMAT_FLOAT, 1, 1, 1, CLASSES, result, NULL};
  for (int y = 0; y < HEIGHT; ++y) {
    for (int x = 0; x < WIDTH; ++x) {
      pixels[y][x] = (float)(strchr(ink, picture_rows[y][x]) - ink) / 4.0f;
    }
  }
  if (ai_platform_network_process(handle, &in, &out) != 1) {
    return 1;
  }
  for (int i = 0; i < CLASSES; ++i) {
    printf("%s %.4f%s", names[i], (double)result[i], i + 1 < CLASSES ? ", " : "\n");
  }
  return 0;
}

/* All pictures; the exit status of the program. */
static int classify_pictures(ai_network* net) {
  const ai_network_params params = {{0}, {0}}; /* weights and activations are static here */
  ai_handle handle = NULL;
  if (ai_platform_network_create(&handle, NULL, net, AI_INTERFACE_API_VERSION) != 0 ||
      ai_platform_network_init(handle, &params) == NULL) {
    printf("error 0x%x\n", (unsigned)ai_platform_network_get_error(handle));
    return 1;
  }
  for (int i = 0; i < PICTURES; ++i) {
    if (classify(handle, pictures + i * HEIGHT) != 0) {
      printf("error 0x%x\n", (unsigned)ai_platform_network_get_error(handle));
      return 1;
    }
  }
  return ai_platform_network_destroy(handle) != NULL;
}

#endif
