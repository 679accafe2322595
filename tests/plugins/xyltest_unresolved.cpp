// SPDX-License-Identifier: Apache-2.0
// A plug-in library that needs a symbol nothing provides: loading it must
// fail, since the loader binds every symbol at load time.
extern "C" void xyltestSymbolNobodyDefines();

extern "C" __attribute__((visibility("default"))) void xyltestCallMissing() { xyltestSymbolNobodyDefines(); }
