# Gives a comment to all declarations that follow it without an empty line or another comment, and the comment at the
# beginning of a header to a class or struct in it that has none.
function depthOf(line) {
  sub(/\/\/.*/, "", line)
  return gsub(/[{(]/, "", line) - gsub(/[})]/, "", line)
}
NR == 1 || inHead { inHead = /^\/\/ /; if (inHead) head = head "/// " substr($0, 4) "\n" }
/^ *\/\/\/ / {
  if (!inBlock) block = ""
  inBlock = 1
  block = block $0 "\n"
  print
  next
}
/^ *$/ || /^ *(public|protected|private):/ || /^ *}/ { if (depth + depthOf($0) <= blockDepth) block = "" }
{
  starts = ended && !/^ *(#|}|public:|protected:|private:|using |static_assert|namespace |\/\/|$)/
  if (inBlock) blockDepth = depth
  else if (starts && block != "" && depth == blockDepth && !/\/\/\/</) printf "%s", block
  else if (starts && block == "" && head != "" && /^(class|struct|enum class) .*{$/) printf "%s", head
  inBlock = 0
  depth += depthOf($0)
  code = $0
  sub(/ *\/\/.*/, "", code)
  if (code ~ /[^ ]/) ended = code ~ /[;{},:]$/ || code ~ /^ *#/
  else ended = 1
  print
}
