// What was measured.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace tamu::bench {

// The columns of every table, in their order.
constexpr unsigned int kColumns = 8;
constexpr const char* kColumnNames[kColumns] = {"SQLite",  "LMDB map", "LMDB pwrite", "tdb",
                                                "LevelDB", "file",     "root",        "key"};
constexpr unsigned int kMapColumn = 1;  // what goals are relative to
constexpr unsigned int kFileColumn = 5;

// Times of one kind of work, in one column.
class Cell {
 public:
  // True when this is a good deal less than the least before.
  bool Add(double nanoseconds);
  bool IsEmpty() const { return samples_.empty(); }
  double Least() const { return least_; }
  double Median() const;

 private:
  std::vector<double> samples_;
  double least_ = 0;
};

struct RowResult {
  std::string name;
  std::array<double, kColumns> goals;  // times LMDB map, 0 for none
  std::array<Cell, kColumns> cells;

  // Of the least times, to LMDB map; 0 when one of them is missing.
  double Ratio(unsigned int column) const;
};

struct Line {
  std::string name;
  std::vector<double> values;
};

// Several columns over one quantity.
struct Course {
  std::string name;
  std::string quantity;  // what counts[i] counts
  std::vector<unsigned int> counts;
  std::vector<Line> lines;
};

struct Results {
  std::string date;
  std::string machine;
  unsigned int rounds = 0;
  std::vector<RowResult> rows;
  std::vector<Course> courses;
};

// "424", "13.0k", "1.31 ms": three digits or more.
std::string TimeText(double nanoseconds);

// As a table of the columns, in Markdown.
std::string TableOf(const Results& results);
std::string TableOf(const Course& course);
// The rows of which README speaks.
std::string ShortTableOf(const Results& results);
std::string JsonOf(const Results& results);

}  // namespace tamu::bench
