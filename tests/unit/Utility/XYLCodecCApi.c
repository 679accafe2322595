/* SPDX-License-Identifier: Apache-2.0 */
/* Compiled as C: the codec headers must be plain C, and a C caller releases
 * the state's block itself with free(). */
#include <XYLCore/Utility/xylbase64.h>
#include <XYLCore/Utility/xylsquish.h>

#include <stdlib.h>
#include <string.h>

int xylCodecCApiRoundTrip(const char *text);

int xylCodecCApiRoundTrip(const char *text) {
  char token[256], back[256];
  unsigned int size = 0;
  XYLsquState state;
  int result = 0;
  if (XYLsqu_squished_size((unsigned int)strlen(text)) > sizeof token)
    return -1;
  XYLsqu_squish(text, token);
  if ((result = XYLsqu_unsquish1(token, &state, &size)) == 0 && size <= sizeof back)
    result = XYLsqu_unsquish2(&state, back) != 0 || strcmp(back, text) != 0;
  free(state.m_pData);
  return result;
}
