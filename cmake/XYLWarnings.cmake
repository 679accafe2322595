# SPDX-License-Identifier: Apache-2.0
# Warnings are errors for every target of the project.
function(xyl_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()
