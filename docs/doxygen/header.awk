# The plain comment at the top of a header is its contract: here it becomes the documentation of the file. Its parts
# ("Thread safety: ...") get headings, what is indented is a sample of code. Further down, declarations that follow one
# another without an empty line share the comment above the first, also where that is a plain one; who copies or moves says
# so; an alert is made of what its class tells; and the class that gives alerts their copies (ErrorClass) isn't shown
# between them. Lines stay where they are as a rule: the additions to the contract take the room of the include guard.
{ lines[NR] = $0 }
END {
  parts = "^// (Thread safety|Failures|Failures and thread safety|Contract|Contract of [^:]*|Units|Ownership|" \
          "Alignment|Locks|Locks that a caller can meet[^:]*|Zones|Escaping|Misuse|Lifetime|Delivery): "
  print "/// \\file"
  for (n = 1; lines[n] ~ /^\/\//; ++n) print contract(n)
  print (sample ? "/// \\endsample" : "")
  for (n += 2; n < NR; n = next_paragraph) paragraph(n)
}
# Prints the lines from the given one up to the next empty one.
function paragraph(n,   last, shared, line) {
  for (last = n; last < NR - 1 && lines[last + 1] !~ /^ *$/; ++last) continue
  next_paragraph = last + 1
  shared = shares(n, last)
  for (; n <= last; ++n) {
    line = lines[n]
    if (n == shared) print "/** @{ */\n"
    if (shared && n >= shared && line ~ /^ *\/\/( |$)/) sub(/\/\//, "///", line)
    print special(line)
  }
  if (shared) print "/** @} */"
}
# The line of the comment that the declarations among these lines share, or 0.
function shares(n, last,   depth, first, count, line) {
  for (; n <= last; ++n) {
    line = lines[n]
    if (line ~ /^ *((public|protected|private):)?$/) continue
    if (line ~ /^ *\/\//) { if (!first) first = n; continue }
    if (line ~ /^ *#/ || line ~ /^inline .*::operator/) return 0
    if (line ~ /^ *(class|struct|enum|namespace|union|template <>) .*[^;]$/) { first = count = depth = 0; continue }
    if (!first) continue
    sub(/ *\/\/.*/, "", line)
    depth += gsub(/{/, "{", line) - gsub(/}/, "}", line)
    if (!depth && line ~ /[;}]$/) ++count
  }
  return count && !depth ? first : 0
}
# Gives those members words that are the same everywhere. What a class takes over by a using declaration is explained where
# it comes from.
function special(line,   name, words, from) {
  if (line ~ /^ +using [A-Za-z]+::[A-Za-z=]+;$/) return ""
  if (line ~ /^ *class .*: public (Oxa::Core::)?(Warning|ErrorClass<)/) { alert = line; return derived(line) }
  if (line ~ /\/\/\//) { commented = line ~ /^ *\/\/\//; return line }
  from = commented; commented = 0
  if (from) return line
  if (match(line, /(operator=|[A-Za-z_]+)\((const )?[A-Za-z_]+&&? ?[a-z]*\)/) || match(line, /operator=\([A-Za-z]+ [a-z]+\)/)) {
    name = substr(line, RSTART, RLENGTH)
    words = name ~ /^operator=/ ? "assigned" : name ~ /&&/ ? "moved" : "copied"
    from = name
    sub(/^[^(]*\((const )?/, "", from)
    sub(/[& ].*/, "", from)
    if (name !~ /^operator=/ && substr(name, 1, index(name, "(") - 1) != from) return alerting(line)
    return "/** " (line ~ /= delete;/ ? "Can't be " : "Can be ") words ". */" line
  }
  return alerting(line)
}
function derived(line) {
  if (sub(/(Oxa::Core::)?ErrorClass<[A-Za-z_]+, /, "", line)) sub(/>/, "", line)
  return line
}
function alerting(line) {
  if (!alert || line !~ /^ *(explicit )?[A-Za-z]+\(.*\); *\\?$/) { if (line ~ /^ *};?$/) alert = ""; return line }
  alert = ""
  return "/** The alert of these circumstances. */" line
}
function contract(n,   line) {
  line = lines[n]
  if (sample) {
    if (line ~ /^\/\/ *$/ && lines[n + 1] ~ /^\/\/ [^ ]/) { sample = 0; return "/// \\endsample" }
    return "///" substr(line, 3)
  }
  if (line ~ /^\/\/ *$/ && lines[n + 1] ~ /^\/\/   /) { sample = 1; return "/// \\sample" }
  sub(/^\/\//, "", line)
  gsub(/\\/, "\\\\\\\\", line)
  gsub(/</, "\\\\<", line)
  if (match(lines[n], parts)) {
    line = substr(line, RLENGTH - 1)
    line = " \\part{" substr(lines[n], 4, RLENGTH - 5) "} " toupper(substr(line, 1, 1)) substr(line, 2)
  }
  return "///" line
}
