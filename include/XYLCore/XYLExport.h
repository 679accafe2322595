/* SPDX-License-Identifier: Apache-2.0
 * XYLExport.h - the export macro and C linkage helpers of libXYLCore.
 *
 * The library is built with hidden visibility; exactly the declarations
 * marked XYL_API (whole classes, or C functions) are exported. Clients see
 * the same macro as a plain default-visibility declaration.
 */
#ifndef XYLCORE_XYLEXPORT_H
#define XYLCORE_XYLEXPORT_H

#if defined(_WIN32)
#if defined(XYL_BUILDING_LIBRARY)
#define XYL_API __declspec(dllexport)
#else
#define XYL_API __declspec(dllimport)
#endif
#else
#define XYL_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define XYL_EXTERN_C_BEGIN extern "C" {
#define XYL_EXTERN_C_END }
#else
#define XYL_EXTERN_C_BEGIN
#define XYL_EXTERN_C_END
#endif

#endif /* XYLCORE_XYLEXPORT_H */
