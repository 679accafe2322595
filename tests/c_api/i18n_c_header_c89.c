/* SPDX-License-Identifier: Apache-2.0 */
/* The C interface's header alone, compiled as C89. */
#include <XYLCore/i18n/c/i18n_c.h>

int main(void) {
  I18NErrorCodes error = I18N_SUCCESS;
  I18NStringHandle string = NULL;
  i18nStringFree(&string, &error);
  return error == I18N_SUCCESS ? 0 : 1;
}
