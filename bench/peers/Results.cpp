#include "bench/peers/Results.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace tamu::bench {

namespace {

std::string Format(const char* format, double number) {
  char text[40];
  std::snprintf(text, sizeof text, format, number);
  return text;
}

std::string Quoted(const std::string& text) {
  return '"' + text + '"';
}

std::string GoalText(const RowResult& row, unsigned int column) {
  const double goal = row.goals[column];
  if (goal <= 0) return "";
  const double ratio = row.Ratio(column);
  return Format(" (%.2f", ratio) + Format(" of %.2f", goal) + (ratio <= goal ? ")" : ", missed)");
}

std::string NumbersOf(const std::vector<double>& values) {
  std::string text;
  for (const double each : values) text += (text.empty() ? "" : ", ") + Format("%.2f", each);
  return text;
}

std::string JsonOf(const RowResult& row) {
  std::string text = "    {\"work\": " + Quoted(row.name) + ", \"ns\": {";
  const char* between = "";
  for (unsigned int i = 0; i < kColumns; ++i) {
    const Cell& cell = row.cells[i];
    if (cell.IsEmpty()) continue;
    text += between + Quoted(kColumnNames[i]) + Format(": [%.1f, ", cell.Least()) +
            Format("%.1f]", cell.Median());
    between = ", ";
  }
  return text + "}}";
}

std::string JsonOf(const Course& course) {
  std::string text = "    {\"work\": " + Quoted(course.name) +
                     ", \"by\": " + Quoted(course.quantity) + ", \"counts\": [";
  for (size_t i = 0; i < course.counts.size(); ++i) {
    text += (i > 0 ? ", " : "") + std::to_string(course.counts[i]);
  }
  text += "], \"lines\": {";
  for (size_t i = 0; i < course.lines.size(); ++i) {
    const Line& line = course.lines[i];
    text += (i > 0 ? ", " : "") + Quoted(line.name) + ": [" + NumbersOf(line.values) + "]";
  }
  return text + "}}";
}

template <class Item>
std::string JsonOfAll(const std::vector<Item>& items) {
  std::string text = "[\n";
  for (size_t i = 0; i < items.size(); ++i) {
    text += JsonOf(items[i]) + (i + 1 < items.size() ? ",\n" : "\n");
  }
  return text + "  ]";
}

}  // namespace

bool Cell::Add(double nanoseconds) {
  constexpr double kGoodDeal = 0.99;
  const bool isBetter = samples_.empty() || nanoseconds < least_ * kGoodDeal;
  if (samples_.empty() || nanoseconds < least_) least_ = nanoseconds;
  samples_.push_back(nanoseconds);
  return isBetter;
}

double Cell::Median() const {
  std::vector<double> sorted = samples_;
  std::sort(sorted.begin(), sorted.end());
  return sorted.empty() ? 0 : sorted[sorted.size() / 2];
}

double RowResult::Ratio(unsigned int column) const {
  const Cell& reference = cells[kMapColumn];
  if (cells[column].IsEmpty() || reference.IsEmpty()) return 0;
  return cells[column].Least() / reference.Least();
}

std::string TimeText(double nanoseconds) {
  if (nanoseconds < 1e4) return Format("%.0f", nanoseconds);
  if (nanoseconds < 1e6) return Format("%.1f us", nanoseconds / 1e3);
  return Format("%.2f ms", nanoseconds / 1e6);
}

std::string TableOf(const Results& results) {
  std::string text = "| work |";
  std::string rule = "|---|";
  for (const char* name : kColumnNames) {
    text += std::string(" ") + name + " |";
    rule += "--:|";
  }
  text += "\n" + rule + "\n";
  for (const RowResult& row : results.rows) {
    text += "| " + row.name + " |";
    for (unsigned int i = 0; i < kColumns; ++i) {
      const Cell& cell = row.cells[i];
      text += cell.IsEmpty() ? " |" : " " + TimeText(cell.Least()) + GoalText(row, i) + " |";
    }
    text += "\n";
  }
  return text;
}

std::string TableOf(const Course& course) {
  std::string text = "| " + course.quantity + " |";
  std::string rule = "|---|";
  for (const unsigned int count : course.counts) {
    text += " " + std::to_string(count) + " |";
    rule += "--:|";
  }
  text += "\n" + rule + "\n";
  for (const Line& line : course.lines) {
    text += "| " + line.name + " |";
    for (const double value : line.values) text += " " + Format("%.4g", value) + " |";
    text += "\n";
  }
  return text;
}

std::string ShortTableOf(const Results& results) {
  const std::set<std::string> wanted = {"get integer", "set integer", "create + delete value",
                                        "read everything", "open + get + close"};
  std::string text =
      "| | libYAX, without a handle | through one | LMDB | SQLite |\n|---|--:|--:|--:|--:|\n";
  for (const RowResult& row : results.rows) {
    if (wanted.count(row.name) == 0) continue;
    text += "| " + row.name + " |";
    for (const unsigned int i : {kFileColumn, kFileColumn + 1, kMapColumn, 0u}) {
      const Cell& cell = row.cells[i];
      text += cell.IsEmpty() ? " |" : " " + TimeText(cell.Least()) + " |";
    }
    text += "\n";
  }
  return text;
}

std::string JsonOf(const Results& results) {
  return "{\n  \"date\": " + Quoted(results.date) + ",\n  \"machine\": " + Quoted(results.machine) +
         ",\n  \"rounds\": " + std::to_string(results.rounds) +
         ",\n  \"rows\": " + JsonOfAll(results.rows) +
         ",\n  \"courses\": " + JsonOfAll(results.courses) + "\n}\n";
}

}  // namespace tamu::bench
