# cmake -DFOLDER=... -DOUTPUT=... -P EmbedPage.cmake
# Makes a source of C++ of a page: page.html, page.css, and the scripts that are listed here, one behind the other.
# A browser runs a script whose SHA-256 the page tells, so the hashes are taken of exactly these bytes.
cmake_minimum_required(VERSION 3.16)

set(scripts text.js model.js tree.js details.js sections.js main.js)

# Sets `result` to an expression that is the text: compilers take pieces of a few thousand characters only.
function(as_expression text result)
  set(pieces "")
  string(LENGTH "${text}" length)
  set(begin 0)
  while(begin LESS length)
    string(SUBSTRING "${text}" ${begin} 4000 piece)
    string(APPEND pieces "      R\"page(${piece})page\",\n")
    math(EXPR begin "${begin} + 4000")
  endwhile()
  set(${result} "${pieces}" PARENT_SCOPE)
endfunction()

# The SHA-256 of a text as "sha256-" and its bytes in base 64.
function(hash_of text result)
  set(letters ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
  string(SHA256 digits "${text}")
  set(hash "")
  # Three bytes, six digits, are four letters; the last two bytes are three of them and a sign.
  foreach(begin RANGE 0 60 6)
    string(SUBSTRING "${digits}00" ${begin} 6 group)
    foreach(shift IN ITEMS 18 12 6 0)
      math(EXPR letter "(0x${group} >> ${shift}) & 63")
      string(SUBSTRING ${letters} ${letter} 1 letter)
      string(APPEND hash ${letter})
    endforeach()
  endforeach()
  string(SUBSTRING ${hash} 0 43 hash)
  set(${result} "sha256-${hash}=" PARENT_SCOPE)
endfunction()

set(script "")
foreach(name IN LISTS scripts)
  file(READ ${FOLDER}/${name} text)
  string(APPEND script "${text}")
endforeach()
file(READ ${FOLDER}/page.css style)
file(READ ${FOLDER}/page.html frame)
foreach(text IN ITEMS script style frame)
  string(REGEX MATCH "[^\n -~]" stray "${${text}}")
  if(NOT stray STREQUAL "" OR "${${text}}" MATCHES "[)]page\"")
    message(FATAL_ERROR "The page holds other characters than ASCII, or )page\"")
  endif()
  as_expression("${${text}}" ${text}_pieces)
  hash_of("${${text}}" ${text}_hash)
endforeach()

file(WRITE ${OUTPUT} "// Made by cmake/EmbedPage.cmake of the files in tools/yaxreg/pages/view.
#include \"tools/yaxreg/view/PageFiles.h\"

namespace yaxreg {

namespace {

template <unsigned kCount>
std::string Joined(const char* const (&pieces)[kCount]) {
  std::string text;
  for (const char* piece : pieces) text += piece;
  return text;
}

}  // namespace

std::string PageFrame() {
  static const char* const pieces[] = {
${frame_pieces}  };
  return Joined(pieces);
}

std::string PageStyle() {
  static const char* const pieces[] = {
${style_pieces}  };
  return Joined(pieces);
}

std::string PageScript() {
  static const char* const pieces[] = {
${script_pieces}  };
  return Joined(pieces);
}

const char* const kPageStyleHash = \"${style_hash}\";
const char* const kPageScriptHash = \"${script_hash}\";

}  // namespace yaxreg
")
