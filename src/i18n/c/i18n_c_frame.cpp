// SPDX-License-Identifier: Apache-2.0
// The C interface's frame: classification of the exception in flight.
#include "i18n_c_frame.h"

#include <XYLCore/ExceptionHierarchy/XYLErrors.h>

namespace i18n_c {

void storeCurrentException(I18NErrorCodes *error) noexcept {
  I18NErrorCodes code = I18N_GENERAL_FAILURE;
  try {
    throw;
  } catch (const I18NRuntimeError &e) {
    code = static_cast<I18NErrorCodes>(e.getErrorCode());
  } catch (const I18NUnexpectedError &e) {
    code = static_cast<I18NErrorCodes>(e.getErrorCode());
  } catch (const XYLOutOfMemoryError &e) {
    // Memory a string could not get from its allocator (the C heap counts
    // as the default one) keeps the allocator's code: -1, or -10.
    long reported = e.getErrorCode();
    if (reported == I18N_ALLOCATION_FAILURE || reported == I18N_NEGATIVE_ALLOCATION_SIZE)
      code = static_cast<I18NErrorCodes>(reported);
  } catch (...) {
  }
  // A failure never reads as success (a code given as text leaves 0).
  if (code == I18N_SUCCESS)
    code = I18N_GENERAL_FAILURE;
  if (error != nullptr)
    *error = code;
}

void raiseCode(I18NErrorCodes code, const char *message) { XYL_THROW(I18NRuntimeError(code, message)); }

void raiseNullHandle() { XYL_THROW(I18NRuntimeError(I18N_GENERAL_FAILURE, "The handle is NULL.")); }

} // namespace i18n_c
