/* SPDX-License-Identifier: Apache-2.0 */
/* The code lines shown in the banners of the public C headers, built and
 * run; see snippets.cpp for the marker that ties each line to its header. */
#include <XYLCore/Utility/xylsquish.h>

#include "c_check.h"

#include <stdlib.h>
#include <string.h>

static int used = 0;

static void use(const char *text) { used = strcmp(text, "squished text") == 0; }

/* clang-format off */
static void unsquish(const char *token) {
  XYLsquState state;                                                         // from <XYLCore/Utility/xylsquish.h>
  unsigned int size;                                                         // from <XYLCore/Utility/xylsquish.h>
  if (XYLsqu_unsquish1(token, &state, &size) == 0) {                         // from <XYLCore/Utility/xylsquish.h>
    char *text = malloc(size);                                               // from <XYLCore/Utility/xylsquish.h>
    if (text != NULL && XYLsqu_unsquish2(&state, text) == 0) { use(text); } // from <XYLCore/Utility/xylsquish.h>
    free(text);                                                              // from <XYLCore/Utility/xylsquish.h>
  }
  free(state.m_pData);                                                       // from <XYLCore/Utility/xylsquish.h>
}
/* clang-format on */

int main(void) {
  const char *original = "squished text";
  char *token = malloc(XYLsqu_squished_size((unsigned int)strlen(original)));
  CHECK(token != NULL);
  if (token == NULL)
    return 1;
  XYLsqu_squish(original, token);
  unsquish(token);
  CHECK(used);
  used = 0;
  unsquish("not a token");
  CHECK(!used);
  free(token);
  return failures == 0 ? 0 : 1;
}
