# SPDX-License-Identifier: Apache-2.0
# Doxygen input filter for the public headers: the headers document
# themselves in plain comments (a banner that states the contract, then a
# "//" comment above each operation). This makes doxygen read them:
#   - the opening banner "/*" documents the file;
#   - "//" comment lines become "///" documentation, and a "/*" comment on
#     a line of its own "/**";
#   - a top-level class with no comment of its own takes the summary line
#     of the banner;
#   - a comment above a run of several declarations (no blank line between)
#     documents each of them: the run becomes a member group.
# Line numbers are kept (group markers go on existing lines), so doxygen's
# warnings point at the header lines.
# Comment text is plain text: backslashes, at-signs and angle brackets are
# not doxygen commands or HTML.
function plain(text) {
  gsub(/\\/, "\\\\\\\\", text)
  gsub(/@/, "\\@", text)
  gsub(/</, "\\<", text)
  gsub(/>/, "\\>", text)
  gsub(/&/, "\\\\&", text)
  return text
}
function flush_run(    i, text, opens, closes, statements, grouped) {
  text = ""
  for (i = 1; i <= nd; i++) text = text decl[i] "\n"
  opens = gsub(/\{/, "{", text)
  closes = gsub(/\}/, "}", text)
  statements = gsub(/;[[:space:]]*(\/\/[^\n]*)?\n/, "&", text)
  grouped = nc > 0 && nd > 0 && opens == closes && statements >= 2
  for (i = 1; i <= nc; i++) {
    if (grouped && i == 1) printf "/** @{ */ "
    print comment[i]
  }
  for (i = 1; i <= nd; i++) {
    if (grouped && i == nd) print decl[i] " /** @} */"
    else print decl[i]
  }
  nc = 0
  nd = 0
}
NR == 1 && /^\/\*/ { print "/** @file"; inblock = 1; next }
inblock {
  print plain($0)
  # The banner's first paragraph ("Name.h - what it is") sums up the file.
  text = $0
  sub(/^[[:space:]]*\*[[:space:]]?/, "", text)
  sub(/[[:space:]]*\*\/.*$/, "", text)
  if (text == "") { if (summary != "") summarised = 1 }
  else if (!summarised) summary = summary (summary == "" ? "" : " ") text
  if ($0 ~ /\*\//) inblock = 0
  next
}
incomment {
  comment[++nc] = plain($0)
  if ($0 ~ /\*\//) incomment = 0
  next
}
{
  line = $0
  if (line ~ /^[[:space:]]*\/\*[^*]/) {
    if (nd > 0) flush_run()
    sub(/\/\*/, "/**", line)
    comment[++nc] = plain(line)
    if (line !~ /\*\//) incomment = 1
    next
  }
  if (line ~ /^[[:space:]]*\/\/( |$)/) {
    if (nd > 0) flush_run()
    sub(/\/\//, "///", line)
    comment[++nc] = plain(line)
    next
  }
  if (line ~ /^[[:space:]]*$/ || line ~ /^[[:space:]]*#/ || line ~ /^[[:space:]]*(public|protected|private):/ ||
      line ~ /^[[:space:]]*}/) {
    flush_run()
    print line
    next
  }
  # A top-level class without a comment of its own is the one the file's
  # banner describes: it takes the banner's summary as its brief.
  if (nc == 0 && nd == 0 && summary != "" && line ~ /^(template[^(]*>[[:space:]]*)?(class|struct)[[:space:]]/ &&
      line !~ /;[[:space:]]*$/) {
    brief = summary
    sub(/^[^ ]+\.h - /, "", brief)
    line = "/** " plain(brief) " */ " line
  }
  decl[++nd] = line
}
END { flush_run() }
