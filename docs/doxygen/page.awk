# Links between pages and to headings, as the pages have them, become references that the site knows; links to files that
# aren't part of it become their names. Each line stays on its line.
function anchor(page, heading) {
  heading = tolower(heading)
  gsub(/[^a-z0-9 _-]/, "", heading)
  gsub(/ /, "-", heading)
  return page "_" heading
}
function relinked(line,   out, text, target, rest, cut) {
  out = ""
  while (match(line, /\[[^]]*\]\([^)]*\)/)) {
    text = substr(line, RSTART, RLENGTH)
    rest = substr(line, RSTART + RLENGTH)
    out = out substr(line, 1, RSTART - 1)
    cut = index(text, "](")
    target = substr(text, cut + 2, length(text) - cut - 2)
    text = substr(text, 2, cut - 2)
    out = out linked(text, target)
    line = rest
  }
  return out line
}
function linked(text, target,   at, file, place) {
  if (target ~ /^https?:/) return "[" text "](" target ")"
  at = index(target, "#")
  file = at ? substr(target, 1, at - 1) : target
  place = at ? substr(target, at + 1) : ""
  sub(/.*\//, "", file)
  if (target ~ /\.svg$/) return "[" text "](" file ")"
  if (file != "" && file !~ /\.md$/) return text
  if (target ~ /examples\//) return text
  if (place == "") return file == "README.md" ? "\\ref index \"" text "\"" : "[" text "](" target ")"
  sub(/\.md$/, "", file)
  return "[" text "](#" (file == "" ? page : file) "_" place ")"
}
FNR == 1 { page = FILENAME; sub(/.*\//, "", page); sub(/\.md$/, "", page) }
/^```/ { code = !code; print; next }
code { print; next }
/^##+ / { heading = $0; sub(/^#+ /, "", heading); print $0 " {#" anchor(page, heading) "}"; next }
{ print relinked(spelled($0)) }
# Doxygen takes a quote in a code span for its end, "<!--" for the beginning of a comment, and entities for what they stand
# for.
function spelled(line,   out, span) {
  while (match(line, /`[^`]*`/)) {
    span = substr(line, RSTART + 1, RLENGTH - 2)
    out = out substr(line, 1, RSTART - 1) (span ~ /\047|<!--|&/ ? "<code>" entities(span) "</code>" : "`" span "`")
    line = substr(line, RSTART + RLENGTH)
  }
  return out line
}
function entities(span) {
  gsub(/\\/, "\\\\\\\\", span)
  gsub(/&/, "\\&amp;", span)
  gsub(/</, "\\&lt;", span)
  gsub(/>/, "\\&gt;", span)
  gsub(/--/, "\\\\--", span)
  return span
}
