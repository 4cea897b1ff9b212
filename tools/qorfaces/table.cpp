#include "table.h"

#include <iomanip>
#include <sstream>

namespace qorfaces {

namespace {

constexpr int kColumn = 9;

void writePoint(std::ostream& out, const Point& point) {
  out << std::setw(kColumn) << point.x << std::setw(kColumn) << point.y;
}

void writeHeading(std::ostream& out, bool headCentres) {
  out << "   face";
  for (const char* const name :
       {"left", "top", "right", "bottom", "bridge x", "bridge y", "chin x", "chin y"}) {
    out << std::setw(kColumn) << name;
  }
  if (headCentres) {
    out << std::setw(kColumn) << "head x" << std::setw(kColumn) << "head y";
  }
  out << '\n';
}

void writeLandmarks(std::ostream& out, const std::vector<Point>& landmarks) {
  constexpr std::size_t perLine = 4;
  for (std::size_t i = 0; i < landmarks.size(); ++i) {
    out << (i % perLine == 0 ? "       " : "  ") << std::setw(2) << i << ':'
        << std::setw(kColumn - 1) << landmarks[i].x << std::setw(kColumn - 1) << landmarks[i].y
        << (i % perLine == perLine - 1 ? "\n" : "");
  }
}

void writePortraitLines(std::ostream& out, const std::vector<Portrait>& portraits) {
  int number = 0;
  for (const Portrait& portrait : portraits) {
    out << "portrait" << std::setw(4) << ++number << "  "
        << (portrait.file.empty() ? "none" : portrait.file);
    const char* before = ": look at this, ";
    for (const LookAt reason : portrait.lookAt) {
      out << before << wordsOf(reason);
      before = ", ";
    }
    out << '\n';
  }
}

std::string facesInWords(const Analysis& analysis) {
  const auto listed = static_cast<int>(analysis.faces.size());
  std::string words = analysis.found == 0   ? "no face"
                      : analysis.found == 1 ? "1 face"
                                            : std::to_string(analysis.found) + " faces";
  if (listed < analysis.found) {
    words += listed == 0 ? ", none fitted" : ", the first " + std::to_string(listed) + " listed";
  }
  return words;
}

class TableOutput : public Output {
public:
  std::string analysed(const std::string& photo, const Analysis& analysis) override {
    std::ostringstream out;
    out << photo << "  " << analysis.width << " x " << analysis.height << "  "
        << facesInWords(analysis) << '\n';
    if (!analysis.faces.empty()) {
      writeHeading(out, analysis.faces.front().headCentre.has_value());
    }
    out << std::fixed << std::setprecision(4);
    int number = 0;
    for (const Face& face : analysis.faces) {
      out << std::setw(7) << ++number;
      writePoint(out, face.box.leftTop);
      writePoint(out, face.box.rightBottom);
      writePoint(out, face.noseBridge);
      writePoint(out, face.chin);
      if (face.headCentre) {
        writePoint(out, *face.headCentre);
      }
      out << '\n';
      writeLandmarks(out, face.landmarks);
    }
    writePortraitLines(out, analysis.portraits);
    return out.str();
  }

  std::string failed(const std::string& /*photo*/, const std::string& /*error*/) override {
    return {};
  }

  std::string end() override { return {}; }
};

} // namespace

std::unique_ptr<Output> tableOutput() {
  return std::make_unique<TableOutput>();
}

} // namespace qorfaces
