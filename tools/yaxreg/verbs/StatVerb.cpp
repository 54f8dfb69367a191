#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <ostream>

#include "registry/store/TernaryFile.h"
#include "tools/yaxreg/cli/FindingText.h"
#include "tools/yaxreg/cli/Loading.h"
#include "tools/yaxreg/image/FileBytes.h"
#include "tools/yaxreg/image/FileMap.h"
#include "tools/yaxreg/verbs/Verbs.h"

namespace yaxreg {

namespace {

constexpr const char* kKindNames[kNodeKinds] = {"string", "key", "value", "block"};

struct KindFigures {
  SlotUse use;
  double worn = 0;    // percent of all slots that the kind can ever have
  double perKey = 0;  // slots that a typical key takes
};

struct Figures {
  size_t bytes = 0;
  size_t keys = 0;
  size_t values = 0;
  KindFigures kinds[kNodeKinds];
  unsigned int moreKeys = 0;   // typical ones that still fit
  unsigned int fullFirst = 0;  // the kind that is full then
};

size_t CountKeys(const Content& content) {
  return static_cast<size_t>(std::count_if(content.keys.begin(), content.keys.end(),
                                           [](const ContentKey& key) { return !key.isMadeUp; }));
}

double WornPercent(const SlotUse& use) {
  const unsigned int tables = std::min(use.tables, RegistryImage::kMaxTables);
  const unsigned int ever = use.slots + (RegistryImage::kMaxTables - tables) *
                                            (tamu::registry::TernaryFile::kExpansionSlots - 1);
  return 100.0 * (use.leaked + use.stranded) / std::max(ever, 1u);
}

// What a key of this file takes on the average, the root included; a file without other keys tells
// nothing of its keys to come.
void FindTypicalKey(Figures* figures) {
  constexpr double kUsual[kNodeKinds] = {3.7, 1, 4, 2.5};
  for (unsigned int kind = 0; kind < kNodeKinds; ++kind) {
    const double present = kind == static_cast<unsigned int>(NodeKind::kValue)
                               ? static_cast<double>(figures->values)
                               : figures->kinds[kind].use.reached;
    figures->kinds[kind].perKey =
        figures->keys < 2 ? kUsual[kind] : present / static_cast<double>(figures->keys);
  }
  figures->kinds[static_cast<unsigned int>(NodeKind::kKey)].perKey = 1;
}

void EstimateRoom(Figures* figures) {
  FindTypicalKey(figures);
  bool isFirst = true;
  for (unsigned int kind = 0; kind < kNodeKinds; ++kind) {
    const KindFigures& one = figures->kinds[kind];
    if (one.perKey <= 0) continue;
    // A little more, so that a quotient that is a whole number but for rounding stays one.
    const double fit = std::floor(one.use.remaining / one.perKey + 1e-9);
    if (!isFirst && fit >= figures->moreKeys) continue;
    figures->moreKeys = static_cast<unsigned int>(fit);
    figures->fullFirst = kind;
    isFirst = false;
  }
}

Figures FiguresOf(const RegistryImage& image) {
  Figures figures;
  figures.bytes = image.bytes().size();
  figures.keys = CountKeys(image.content());
  figures.values = image.content().ValueCount();
  for (unsigned int kind = 0; kind < kNodeKinds; ++kind) {
    figures.kinds[kind].use = image.UseOf(static_cast<NodeKind>(kind));
    figures.kinds[kind].worn = WornPercent(figures.kinds[kind].use);
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

std::string Counted(size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string RoomText(const Figures& figures) {
  const std::string full = std::string("the ") + kKindNames[figures.fullFirst] + "s are full";
  if (figures.moreKeys == 0) return "no room for another typical key, " + full;
  return "room for " + Counted(figures.moreKeys, "more typical key") + ", then " + full;
}

// ---- output

void PrintRow(const std::vector<std::string>& cells, std::ostream& out) {
  constexpr size_t kWidths[] = {6, 7, 7, 7, 7, 9, 10, 7, 7, 8};
  for (size_t i = 0; i < cells.size(); ++i) {
    const std::string blanks(cells[i].size() < kWidths[i] ? kWidths[i] - cells[i].size() : 0, ' ');
    out << (i == 0 ? cells[i] + blanks : blanks + cells[i]);
  }
}

void PrintTable(const Figures& figures, const Palette& palette, std::ostream& out) {
  out << palette.faint;
  PrintRow(
      {"", "slots", "used", "leaked", "free", "stranded", "remaining", "tables", "worn", "per key"},
      out);
  out << palette.end << '\n';
  for (unsigned int kind = 0; kind < kNodeKinds; ++kind) {
    const KindFigures& one = figures.kinds[kind];
    const SlotUse& use = one.use;
    PrintRow({kKindNames[kind], std::to_string(use.slots), std::to_string(use.reached),
              std::to_string(use.leaked), std::to_string(use.free), std::to_string(use.stranded),
              std::to_string(use.remaining),
              std::to_string(use.tables) + "/" + std::to_string(RegistryImage::kMaxTables),
              Decimal(one.worn, 1) + "%", Decimal(one.perKey, 2)},
             out);
    out << '\n';
  }
}

void PrintFigures(const Figures& figures, const Palette& palette, std::ostream& out) {
  out << Counted(figures.bytes, "byte") << ", " << Counted(figures.keys, "key") << ", "
      << Counted(figures.values, "value") << "\n\n";
  PrintTable(figures, palette, out);
  out << '\n'
      << (figures.moreKeys == 0 ? palette.bad : "") << RoomText(figures)
      << (figures.moreKeys == 0 ? palette.end : "") << '\n';
}

void PrintJson(const Figures& figures, const std::string& file, std::ostream& out) {
  nlohmann::ordered_json json = {{"file", JsonText(file)},
                                 {"bytes", figures.bytes},
                                 {"keys", figures.keys},
                                 {"values", figures.values}};
  for (unsigned int kind = 0; kind < kNodeKinds; ++kind) {
    const KindFigures& one = figures.kinds[kind];
    json["kinds"][kKindNames[kind]] = {
        {"slots", one.use.slots},           {"used", one.use.reached},
        {"leaked", one.use.leaked},         {"free", one.use.free},
        {"stranded", one.use.stranded},     {"remaining", one.use.remaining},
        {"tables", one.use.tables},         {"maxTables", RegistryImage::kMaxTables},
        {"wornPercent", Rounded(one.worn)}, {"perTypicalKey", Rounded(one.perKey)}};
  }
  json["moreTypicalKeys"] = figures.moreKeys;
  json["fullFirst"] = kKindNames[figures.fullFirst];
  out << json.dump(2) << '\n';
}

// ---- the map

std::string BaseName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

// True when both paths lead to one file.
bool IsSameFile(const std::string& a, const std::string& b) {
  struct stat first;
  struct stat second;
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// Where a file is that may be replaced: behind the links that lead to it. False when there is
// something else than a file.
bool FindTarget(const std::string& path, std::string* target) {
  *target = path;
  struct stat found;
  if (stat(path.c_str(), &found) != 0) return true;
  if (!S_ISREG(found.st_mode)) return false;
  const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), std::free);
  if (resolved != nullptr) *target = resolved.get();
  return true;
}

// Writes beside it and renames, so that a failure leaves the old map.
ExitCode WriteMap(Invocation& call, const std::string& path, const std::string& svg) {
  std::string target;
  if (!FindTarget(path, &target)) return call.Fail(kFailed, path, "", "is no regular file");
  const std::string temporary = target + "." + std::to_string(getpid()) + ".new";
  const FileResult written = WriteNewFile(temporary, svg);
  if (!written.isDone()) return call.Fail(kFailed, path, "", written.reason);
  if (std::rename(temporary.c_str(), target.c_str()) == 0) return kDone;
  const std::string reason = std::strerror(errno);
  unlink(temporary.c_str());
  return call.Fail(kFailed, path, "", "cannot be replaced: " + reason);
}

ExitCode DrawMap(Invocation& call, const RegistryImage& image, const Figures& figures) {
  if (!call.Has("--map")) return kDone;
  const std::string subtitle = Counted(figures.keys, "key") + ", " +
                               Counted(figures.values, "value") + "; " + RoomText(figures);
  return WriteMap(call, call.Text("--map"), DrawFileMap(image, BaseName(call.File()), subtitle));
}

}  // namespace

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

}  // namespace yaxreg
