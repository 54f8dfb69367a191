#include "tools/yaxreg/view/ViewPage.h"

#include <functional>
#include <map>
#include <ostream>

#include "tools/yaxreg/image/FileMap.h"
#include "tools/yaxreg/image/Svg.h"
#include "tools/yaxreg/view/PageFiles.h"

namespace yaxreg {

namespace {

using Writer = std::function<void(std::ostream& out)>;

std::string TitleOf(const ViewedFile& first, const ViewedFile* second) {
  std::string title = first.name;
  if (second != nullptr) title += " and " + second->name;
  return draw::Escaped(title);
}

void WriteMap(const RegistryImage& image, std::ostream& out) {
  const FileMapParts map = DrawFileMapParts(image);
  out << "<div class=\"strip scroll\" tabindex=\"0\" role=\"group\" aria-label=\"The file to "
         "scale, can be scrolled\">"
      << map.strip << "</div>\n<div class=\"panels\">\n";
  for (const std::string& panel : map.panels) {
    out << "<div class=\"scroll\" tabindex=\"0\" role=\"group\" aria-label=\"Slots, can be "
           "scrolled\">"
        << panel << "</div>\n";
  }
  out << "</div>\n";
}

// Writes the frame, and in the place of each name what belongs there.
void FillFrame(const std::string& frame, const std::map<std::string, Writer>& writers,
               std::ostream& out) {
  size_t begin = 0;
  for (size_t open = frame.find("{{"); open != std::string::npos; open = frame.find("{{", begin)) {
    const size_t close = frame.find("}}", open);
    out << frame.substr(begin, open - begin);
    writers.at(frame.substr(open + 2, close - open - 2))(out);
    begin = close + 2;
  }
  out << frame.substr(begin);
}

Writer TextWriter(const std::string& text) {
  return [text](std::ostream& out) { out << text; };
}

}  // namespace

void WriteViewPage(const ViewedFile& first, const ViewedFile* second, std::ostream& out) {
  FillFrame(PageFrame(),
            {{"title", TextWriter(TitleOf(first, second))},
             {"style-hash", TextWriter(kPageStyleHash)},
             {"script-hash", TextWriter(kPageScriptHash)},
             {"style", TextWriter(PageStyle())},
             {"script", TextWriter(PageScript())},
             {"map", [&](std::ostream& to) { WriteMap(*first.image, to); }},
             {"data", [&](std::ostream& to) { WriteViewData(first, second, to); }}},
            out);
}

}  // namespace yaxreg
