#include "bench/peers/Plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tamu::bench {

namespace {

constexpr const char* kColours[kColumns] = {"#9aa0a6", "#5b8def", "#a8c1f7", "#b59b6b",
                                            "#c58fb8", "#d1495b", "#2e7d32", "#66bb6a"};

const char* ColourOf(const std::string& column) {
  for (unsigned int i = 0; i < kColumns; ++i) {
    if (column == kColumnNames[i]) return kColours[i];
  }
  return "#000";
}

class Picture {
 public:
  Picture(double width, double height) {
    Add("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %.0f %.0f\" "
        "font-family=\"sans-serif\" font-size=\"12\">\n"
        "<rect width=\"100%%\" height=\"100%%\" fill=\"#fff\"/>\n",
        width, height);
  }
  void Box(double x, double y, double width, double height, const char* colour) {
    Add("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" ", x, y, width, height);
    text_ += std::string("fill=\"") + colour + "\"/>\n";
  }
  void Rule(double x1, double y1, double x2, double y2, const char* colour, double width) {
    Add("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" ", x1, y1, x2, y2);
    Add("stroke-width=\"%.1f\" ", width);
    text_ += std::string("stroke=\"") + colour + "\"/>\n";
  }
  void Write(double x, double y, const char* anchor, const std::string& words) {
    Add("<text x=\"%.1f\" y=\"%.1f\" ", x, y);
    text_ += std::string("text-anchor=\"") + anchor + "\">" + words + "</text>\n";
  }
  std::string End() { return text_ + "</svg>\n"; }

 private:
  template <class... Numbers>
  void Add(const char* format, Numbers... numbers) {
    char text[300];
    std::snprintf(text, sizeof text, format, numbers...);
    text_ += text;
  }
  std::string text_;
};

std::string Short(double number) {
  char text[24];
  std::snprintf(text, sizeof text, "%g", number);
  return text;
}

// Where a number lies between two others, from 0 to 1.
double Place(double number, double from, double to, bool isLogarithmic) {
  if (isLogarithmic) return std::log(number / from) / std::log(to / from);
  return (number - from) / (to - from);
}

void AddLegend(Picture& picture, const std::vector<std::string>& names, double x, double y) {
  for (const std::string& name : names) {
    picture.Box(x, y - 9, 10, 10, ColourOf(name));
    picture.Write(x + 14, y, "start", name);
    x += 30 + 7.0 * static_cast<double>(name.size());
  }
}

}  // namespace

std::string BarsOf(const Results& results) {
  constexpr double kLeft = 220;
  constexpr double kWide = 560;
  constexpr double kBar = 7;
  constexpr double kFrom = 0.1;
  constexpr double kTo = 100;
  const double rowHeight = kColumns * kBar + 10;
  const double bottom = 50 + rowHeight * static_cast<double>(results.rows.size());
  Picture picture(kLeft + kWide + 40, bottom + 30);
  AddLegend(picture, {kColumnNames, kColumnNames + kColumns}, 20, 20);
  for (double tick = kFrom; tick <= kTo * 1.01; tick *= 10) {
    const double x = kLeft + kWide * Place(tick, kFrom, kTo, true);
    picture.Rule(x, 35, x, bottom, tick > 0.9 && tick < 1.1 ? "#444" : "#ddd", 1);
    picture.Write(x, bottom + 16, "middle", Short(tick) + " x LMDB map");
  }
  double y = 40;
  for (const RowResult& row : results.rows) {
    picture.Write(kLeft - 8, y + rowHeight / 2, "end", row.name);
    for (unsigned int i = 0; i < kColumns; ++i) {
      const double ratio = row.Ratio(i);
      if (ratio <= 0) continue;
      const double end = Place(std::clamp(ratio, kFrom, kTo), kFrom, kTo, true);
      picture.Box(kLeft, y + kBar * i, std::max(1.0, kWide * end), kBar - 1, kColours[i]);
    }
    y += rowHeight;
  }
  return picture.End();
}

std::string LinesOf(const Course& course, bool isTime) {
  constexpr double kLeft = 70;
  constexpr double kTop = 50;
  constexpr double kWide = 560;
  constexpr double kHigh = 300;
  double least = 1e30;
  double most = 0;
  for (const Line& line : course.lines) {
    for (const double each : line.values) {
      least = std::min(least, each);
      most = std::max(most, each);
    }
  }
  const double from = isTime ? std::pow(10, std::floor(std::log10(least))) : 0;
  const double to = isTime ? std::pow(10, std::ceil(std::log10(most))) : most * 1.05;
  const auto placeX = [&](unsigned int count) {
    return kLeft + kWide * Place(count, course.counts.front(), course.counts.back(), true);
  };
  const auto placeY = [&](double value) {
    return kTop + kHigh * (1 - Place(value, from, to, isTime));
  };
  Picture picture(kLeft + kWide + 40, kTop + kHigh + 50);
  std::vector<std::string> names;
  for (const Line& line : course.lines) names.push_back(line.name);
  AddLegend(picture, names, 20, 20);
  for (double tick = isTime ? from : to / 4; tick <= to * 1.01;
       tick = isTime ? tick * 10 : tick + to / 4) {
    picture.Rule(kLeft, placeY(tick), kLeft + kWide, placeY(tick), "#ddd", 1);
    picture.Write(kLeft - 6, placeY(tick) + 4, "end",
                  isTime ? TimeText(tick) : Short(tick).substr(0, 4));
  }
  for (const unsigned int count : course.counts) {
    picture.Write(placeX(count), kTop + kHigh + 18, "middle", std::to_string(count));
  }
  picture.Write(
      kLeft + kWide / 2, kTop + kHigh + 38, "middle",
      course.name + (isTime ? ", ns, by number of " : ", by number of ") + course.quantity);
  for (const Line& line : course.lines) {
    for (size_t i = 1; i < line.values.size(); ++i) {
      picture.Rule(placeX(course.counts[i - 1]), placeY(line.values[i - 1]),
                   placeX(course.counts[i]), placeY(line.values[i]), ColourOf(line.name), 2);
    }
  }
  return picture.End();
}

}  // namespace tamu::bench
