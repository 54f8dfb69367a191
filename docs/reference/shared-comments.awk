# Gives a comment to those declarations without one behind it that docs/reference/shared-comments.txt names for the header
# (-v header=...), and to what follows it and is deleted, defaulted or a destructor; the comment at the beginning of a
# header to the first class or struct in it that has none. All else is documented by a comment of its own or not at all.
# Fails where the list names what needs no comment.
function depthOf(line) {
  sub(/(\/\/|\/\*).*/, "", line)
  return gsub(/[{(]/, "", line) - gsub(/[})]/, "", line)
}
function sharesComment(line) {
  if (line ~ /= (delete|default);$/ || line ~ /^ *~/) return 1
  sub(/^ */, "", line)
  if (!(line in listed)) return 0
  used[line] = 1
  return 1
}
BEGIN {
  while ((getline entry < "docs/reference/shared-comments.txt") > 0) {
    if (index(entry, header ": ") == 1) listed[substr(entry, length(header) + 3)] = 1
  }
}
END {
  for (entry in listed) {
    if (entry in used) continue
    print header ": shared-comments.txt gives a comment to what needs none: " entry > "/dev/stderr"
    failed = 1
  }
  exit failed
}
NR == 1 && /^\/\/\/ / {
  print "/// \\file"
  inHead = 1
}
NR == 1 && /^\/\*\* / {
  print "/** \\file"
  sub(/^\/\*\* /, " * ")
  inHead = /\*\// ? 0 : 2
  print
  next
}
inHead == 1 && /^\/\/\/( |$)/ {
  head = head $0 "\n"
  print
  next
}
inHead == 2 {
  if (/\*\//) inHead = 0
  print
  next
}
{ inHead = 0 }
inC || /^ *\/\*\* / || /^ *\/\/\/( |$)/ {
  if (!inBlock) block = ""
  inBlock = 1
  inC = (inC || /^ *\/\*\* /) && !/\*\//
  block = block $0 "\n"
  print
  next
}
/^ *$/ || /^ *(public|protected|private):/ || /^ *}/ { if (depth + depthOf($0) <= blockDepth) block = "" }
{
  starts = ended && !/^ *(#|}|public:|protected:|private:|using |static_assert|namespace |\/\/|$)/
  if (inBlock) blockDepth = depth
  else if (starts && block != "" && depth == blockDepth && !/(\/\/\/|\/\*\*)</) printf "%s", sharesComment($0) ? block : ""
  else if (starts && block == "" && head != "" && /^(class|struct|enum class) .*{$/) {
    printf "%s", head
    head = ""
  }
  inBlock = 0
  depth += depthOf($0)
  code = $0
  sub(/ *(\/\/|\/\*).*/, "", code)
  if (code ~ /[^ ]/) ended = code ~ /[;{},:]$/ || code ~ /^ *#/
  else ended = 1
  print
}
