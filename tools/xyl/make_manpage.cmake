# SPDX-License-Identifier: Apache-2.0
# Writes the manual page of the xyl tool from its own --help texts, so that
# the page and the tool cannot drift apart.
#   cmake -DXYL=<path-to-xyl> -DOUT=<xyl.1> -P make_manpage.cmake

# The text as literal roff lines: backslashes and leading dots or quotes
# escaped.
function(to_roff text out)
  string(REPLACE "\\" "\\e" text "${text}")
  string(REGEX REPLACE "(^|\n)([.'])" "\\1\\\\&\\2" text "${text}")
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

function(run_xyl out)
  execute_process(COMMAND ${XYL} ${ARGN} OUTPUT_VARIABLE text RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "xyl ${ARGN} failed: ${rc}")
  endif()
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

run_xyl(version --version)
string(REGEX MATCH "^xyl ([^\n]*)" _ "${version}")
set(tool_version "${CMAKE_MATCH_1}")
run_xyl(list --help)
to_roff("${list}" list_roff)

set(page ".TH XYL 1 \"\" \"xyl ${tool_version}\" \"User Commands\"
.SH NAME
xyl \\- the command-line front end of libXYLCore
.SH SYNOPSIS
.B xyl
\\fIcommand\\fR [\\fIoptions\\fR] [\\fIarguments\\fR]
.br
.B xyl
\\-\\-help | \\-\\-version
.SH DESCRIPTION
.nf
${list_roff}.fi
.SH COMMANDS
")
string(REGEX MATCHALL "\n  [a-z][a-z0-9-]*" names "${list}")
foreach(entry IN LISTS names)
  string(STRIP "${entry}" name)
  run_xyl(help ${name} --help)
  to_roff("${help}" help_roff)
  string(APPEND page ".SS ${name}\n.nf\n${help_roff}.fi\n")
endforeach()
string(APPEND page ".SH \"EXIT STATUS\"
0 success; 1 bad data, an unreadable input or a failed write; 2 bad usage.
.SH \"SEE ALSO\"
The libXYLCore documentation (docs/ in its source tree).
")
file(WRITE "${OUT}" "${page}")
