// stat: how full and how worn a file is, in numbers and as a picture.
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>

#include "registry/format/RecordSize.h"
#include "tools/yaxreg/image/FileMap.h"
#include "tools/yaxreg/image/ImageJson.h"
#include "tools/yaxreg/image/Kinds.h"
#include "tools/yaxreg/text/JsonText.h"
#include "tools/yaxreg/text/Numbers.h"
#include "tools/yaxreg/verbs/CommonArguments.h"
#include "tools/yaxreg/verbs/FindingText.h"
#include "tools/yaxreg/verbs/Loading.h"
#include "tools/yaxreg/verbs/OutputFile.h"
#include "tools/yaxreg/verbs/VerbTable.h"

namespace yaxreg {

namespace {

struct KindFigures {
  Wear wear;
  double perKey = 0;  // slots that a typical key takes
};

struct Figures {
  size_t bytes = 0;
  size_t keys = 0;
  size_t values = 0;
  KindFigures kinds[kNodeKinds];
  unsigned int moreKeys = 0;              // typical ones that still fit
  NodeKind fullFirst = NodeKind::kValue;  // the kind that is full then
};

// The slots that the keys there are take; names without a key are none of theirs.
double TakenByKeys(const Figures& figures, const Wear& wear) {
  if (wear.kind == NodeKind::kValue) return static_cast<double>(figures.values);
  return wear.inUse - wear.withoutKey;
}

// What a key of this file takes on the average, the root included; a file without other keys tells
// nothing of its keys to come.
void FindTypicalKey(Figures* figures) {
  constexpr double kUsual[kNodeKinds] = {3.7, 1, 4, 2.5};
  for (unsigned int kind = 0; kind < kNodeKinds; ++kind) {
    const double taken = TakenByKeys(*figures, figures->kinds[kind].wear);
    figures->kinds[kind].perKey =
        figures->keys < 2 ? kUsual[kind] : taken / static_cast<double>(figures->keys);
  }
  figures->kinds[static_cast<unsigned int>(NodeKind::kKey)].perKey = 1;
}

void EstimateRoom(Figures* figures) {
  FindTypicalKey(figures);
  bool isFirst = true;
  for (const KindFigures& one : figures->kinds) {
    if (one.perKey <= 0) continue;
    // A little more, so that a quotient that is a whole number but for rounding stays one.
    const double fit = std::floor(one.wear.left / one.perKey + 1e-9);
    if (!isFirst && fit >= figures->moreKeys) continue;
    figures->moreKeys = static_cast<unsigned int>(fit);
    figures->fullFirst = one.wear.kind;
    isFirst = false;
  }
}

Figures FiguresOf(const RegistryImage& image) {
  Figures figures;
  figures.bytes = image.bytes().size();
  figures.keys = image.content().KeyCount();
  figures.values = image.content().ValueCount();
  for (const NodeKind kind : kAllKinds) {
    figures.kinds[static_cast<unsigned int>(kind)].wear = WearOf(image, kind);
  }
  EstimateRoom(&figures);
  return figures;
}

std::string Decimal(double number, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", digits, number);
  return text;
}

double Rounded(double number) {
  return std::round(number * 100) / 100;
}

std::string RoomText(const Figures& figures) {
  const std::string full = "the " + KindNames(figures.fullFirst) + " are full";
  if (figures.moreKeys == 0) return "no room for another typical key, " + full;
  return "room for " + Counted(figures.moreKeys, "more typical key") + ", then " + full;
}

// ---- output

void PrintRow(const std::vector<std::string>& cells, std::ostream& out) {
  constexpr size_t kWidths[] = {12, 7, 8, 8, 7, 10, 7, 8, 8, 9};
  for (size_t i = 0; i < cells.size(); ++i) {
    const std::string blanks(cells[i].size() < kWidths[i] ? kWidths[i] - cells[i].size() : 0, ' ');
    out << (i == 0 ? cells[i] + blanks : blanks + cells[i]);
  }
  out << '\n';
}

void PrintTable(const Figures& figures, const Palette& palette, std::ostream& out) {
  out << palette.faint;
  PrintRow(
      {"", "slots", "in use", "leaked", "free", "stranded", "left", "tables", "worn", "per key"},
      out);
  out << palette.end;
  for (const KindFigures& one : figures.kinds) {
    const Wear& wear = one.wear;
    PrintRow({KindNames(wear.kind), std::to_string(wear.slots), std::to_string(wear.inUse),
              std::to_string(wear.leaked), std::to_string(wear.free), std::to_string(wear.stranded),
              std::to_string(wear.left),
              std::to_string(wear.tables) + "/" + std::to_string(tamu::registry::kTablesMax),
              Decimal(wear.lostPercent(), 1) + "%", Decimal(one.perKey, 2)},
             out);
  }
}

void PrintFigures(const Figures& figures, const Palette& palette, std::ostream& out) {
  out << Counted(figures.bytes, "byte") << ", " << Counted(figures.keys, "key") << ", "
      << Counted(figures.values, "value") << "\n\n";
  PrintTable(figures, palette, out);
  const unsigned int withoutKey = figures.kinds[0].wear.withoutKey;
  if (withoutKey > 0) out << "string nodes in use without a key: " << withoutKey << '\n';
  out << '\n'
      << (figures.moreKeys == 0 ? palette.bad : "") << RoomText(figures)
      << (figures.moreKeys == 0 ? palette.end : "") << '\n';
}

void PrintJson(const Figures& figures, const std::string& file, std::ostream& out) {
  nlohmann::ordered_json json = {{"file", JsonText(file)},
                                 {"bytes", figures.bytes},
                                 {"keys", figures.keys},
                                 {"values", figures.values}};
  for (const KindFigures& one : figures.kinds) {
    nlohmann::ordered_json& kind = json["kinds"][RegistryImage::KindName(one.wear.kind)];
    kind = WearJson(one.wear);
    kind["slots"] = one.wear.slots;
    kind["tables"] = one.wear.tables;
    kind["maxTables"] = tamu::registry::kTablesMax;
    kind["wornPercent"] = Rounded(one.wear.lostPercent());
    kind["perTypicalKey"] = Rounded(one.perKey);
  }
  json["moreTypicalKeys"] = figures.moreKeys;
  json["fullFirst"] = RegistryImage::KindName(figures.fullFirst);
  out << JsonDump(json, 2) << '\n';
}

// ---- the map

ExitCode DrawMap(Invocation& call, const RegistryImage& image, const Figures& figures) {
  if (!call.Has("--map")) return kDone;
  const std::string subtitle = Counted(figures.keys, "key") + ", " +
                               Counted(figures.values, "value") + "; " + RoomText(figures);
  return WriteOutputFile(call, call.Text("--map"),
                         DrawFileMap(image, BaseName(call.File()), subtitle),
                         {"SVG file", {"<svg", "<?xml"}});
}

ExitCode RunStat(Invocation& call) {
  if (call.Has("--map") && IsSameFile(call.File(), call.Text("--map"))) {
    return call.Fail(kUsage, call.Text("--map"), "", "is the registry itself");
  }
  ExitCode code = kDone;
  const std::unique_ptr<RegistryImage> image = LoadImage(call, call.File(), &code);
  if (image == nullptr) return code;
  const Figures figures = FiguresOf(*image);
  if (call.isJson()) {
    PrintJson(figures, call.File(), call.out);
  } else {
    PrintFigures(figures, call.palette, call.out);
  }
  const ExitCode drawn = DrawMap(call, *image, figures);
  code = EndOfLook(call, *image, call.File());
  return drawn == kDone ? code : drawn;
}

}  // namespace

Verb StatVerb() {
  return {
      "stat",
      "Tell how full and how worn a file is",
      "Tells for each kind of record (string nodes spell the names of keys, data blocks hold the "
      "data of values, 64 bytes each) the slots that the file has, and how many of them are in "
      "use (the tree leads to them), leaked (marked as in use, but nothing leads to them), free "
      "and stranded (free in an older table, which yaxreg hands out again, and programs do with "
      "SpacePolicy::kReuse). The column left tells "
      "how many others can still be handed out until changes are refused with status 75, tables "
      "how many "
      "of at most 21 there are, worn how much of the room of all tables is lost until the file is "
      "compacted (leaked, stranded, and string nodes that only spell names without a key), per "
      "key how many slots a key of this file takes on the average. The last line tells how many "
      "more such keys fit, and what is full then.",
      {kFile},
      {{"--map", "SVG",
        "Draw the file into an SVG file as well; of files that exist only an empty one and an SVG "
        "file are replaced"}},
      "yaxreg stat device.rce --map device.svg",
      RunStat};
}

}  // namespace yaxreg
