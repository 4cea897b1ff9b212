// draw_pictures MODELS/ PHOTO ANNOTATED PERSON CLOSEUP OUT/: the pictures of README.md and docs/,
// from a photograph of one face, what qorfaces has made of it (an annotated copy, the person cut
// out, and the same of the face's surroundings), and what the library measures in it. Writes
// OUT/front.jpg and OUT/head-centre.jpg.
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <iostream>
#include <qorocv460/qorocv460.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

const cv::Scalar kWhite(255, 255, 255);
const cv::Scalar kBlack(0, 0, 0);
const cv::Scalar kBlue(200, 90, 0);
const cv::Scalar kRed(40, 40, 220);
const cv::Scalar kYellow(0, 220, 255);

constexpr int kMaxSide = 1000;

/// A record's box and points, in fractions of the photograph.
struct Head {
  cv::Rect2d box;
  cv::Point2d bridge;
  cv::Point2d chin;
  cv::Point2d centre;

  double top() const { return 2 * centre.y - chin.y; }
};

Head headOf(const std::vector<double>& results, int count) {
  if (count != 1 + QOROCV460_HEAD_CENTRE_RECORD) {
    throw std::runtime_error("the pictures are of a photograph with one face");
  }
  const double* const record = &results[1];
  return {{record[0], record[1], record[2] - record[0], record[3] - record[1]},
          {record[4], record[5]},
          {record[6], record[7]},
          {record[8], record[9]}};
}

Head measuredByColour(const std::string& photo) {
  std::vector<double> results(QOROCV460_HEAD_CENTRE_RESULTS);
  int count = QOROCV460_HEAD_CENTRE_RESULTS;
  int width = 0;
  int height = 0;
  findQORFacesDUNInTread_TR02(photo.c_str(), results.data(), &count, QOROCV460_CAFFE,
                              QOROCV460_FIRST_SLOT, kMaxSide, nullptr, &width, &height);
  return headOf(results, count);
}

Head measuredByMask(const std::string& photo) {
  std::vector<double> results(QOROCV460_HEAD_CENTRE_RESULTS);
  std::vector<unsigned char> view(QOROCV460_VIEW_BYTES);
  std::vector<unsigned char> mask(QOROCV460_MASK_BYTES);
  int count = QOROCV460_HEAD_CENTRE_RESULTS;
  int width = 0;
  int height = 0;
  findQORFacesDUNInTreadWithMask01(photo.c_str(), results.data(), &count, QOROCV460_CAFFE,
                                   QOROCV460_FIRST_SLOT, kMaxSide, 0, &width, &height, view.data(),
                                   mask.data());
  return headOf(results, count);
}

cv::Mat readPicture(const std::string& path, int mode = cv::IMREAD_COLOR) {
  cv::Mat picture = cv::imread(path, mode);
  if (picture.empty()) {
    throw std::runtime_error("cannot read " + path);
  }
  return picture;
}

void writePicture(const std::string& path, const cv::Mat& picture) {
  if (!cv::imwrite(path, picture, {cv::IMWRITE_JPEG_QUALITY, 88})) {
    throw std::runtime_error("cannot write " + path);
  }
}

/// `picture` (8-bit BGRA) over `background` (8-bit BGR) of the same size.
cv::Mat over(const cv::Mat& picture, const cv::Mat& background) {
  cv::Mat result(background.size(), CV_8UC3);
  for (int y = 0; y < result.rows; ++y) {
    for (int x = 0; x < result.cols; ++x) {
      const cv::Vec4b& front = picture.at<cv::Vec4b>(y, x);
      const cv::Vec3b& back = background.at<cv::Vec3b>(y, x);
      for (int channel = 0; channel < 3; ++channel) {
        result.at<cv::Vec3b>(y, x)[channel] = static_cast<unsigned char>(
            (front[channel] * front[3] + back[channel] * (255 - front[3])) / 255);
      }
    }
  }
  return result;
}

/// What transparency looks like.
cv::Mat chequers(const cv::Size& size) {
  constexpr int side = 20;
  cv::Mat picture(size, CV_8UC3, kWhite);
  for (int y = 0; y < size.height; y += side) {
    for (int x = (y / side % 2) * side; x < size.width; x += 2 * side) {
      cv::rectangle(picture, {x, y, side, side}, {215, 215, 215}, cv::FILLED);
    }
  }
  return picture;
}

cv::Mat besideEachOther(const std::vector<cv::Mat>& panels) {
  constexpr int gap = 12;
  cv::Mat row;
  for (const cv::Mat& panel : panels) {
    cv::Mat framed;
    cv::copyMakeBorder(panel, framed, 0, 0, row.empty() ? 0 : gap, 0, cv::BORDER_CONSTANT, kWhite);
    if (row.empty()) {
      row = framed;
    } else {
      cv::hconcat(row, framed, row);
    }
  }
  return row;
}

cv::Mat atHeight(const cv::Mat& picture, int height) {
  cv::Mat result;
  cv::resize(picture, result, {cvRound(1.0 * picture.cols / picture.rows * height), height}, 0, 0,
             picture.rows > height ? cv::INTER_AREA : cv::INTER_CUBIC);
  return result;
}

void drawFront(const std::string& annotated, const std::string& closeUp, const std::string& out) {
  constexpr int height = 600;
  const cv::Mat faces = atHeight(readPicture(annotated), height);
  const cv::Mat person = atHeight(readPicture(closeUp, cv::IMREAD_UNCHANGED), height);
  writePicture(out, besideEachOther({faces, over(person, chequers(person.size()))}));
}

// --- How a head is measured ---------------------------------------------------------------------------

/// Looks at the part of a picture around a head.
class HeadPanel {
public:
  HeadPanel(const cv::Mat& picture, const Head& head) : part_(partAround(head)) {
    const cv::Rect pixels(cvRound(part_.x * picture.cols), cvRound(part_.y * picture.rows),
                          cvRound(part_.width * picture.cols),
                          cvRound(part_.height * picture.rows));
    cv::resize(picture(pixels), panel_, {kSide, kSide}, 0, 0, cv::INTER_CUBIC);
  }

  /// The columns of the box, from the photograph's top down to the nose bridge: what is looked at.
  void shadeBand(const Head& head) {
    const cv::Point leftTop = at({head.box.x, 0});
    const cv::Rect band(leftTop, at({head.box.x + head.box.width, head.bridge.y}));
    cv::Mat tinted(band.size(), CV_8UC3, kYellow);
    cv::addWeighted(panel_(band), 0.65, tinted, 0.35, 0, panel_(band));
  }

  void rule(double y, const std::string& name, const cv::Scalar& colour) {
    const int row = at({0, y}).y;
    cv::line(panel_, {0, row}, {kSide, row}, colour, 2, cv::LINE_AA);
    write(name, {8, row > 24 ? row - 7 : row + 20}, colour);
  }

  void bracket(double x, double from, double to, const cv::Scalar& colour) {
    const cv::Point start = at({x, from});
    const cv::Point end = at({x, to});
    cv::arrowedLine(panel_, start, end, colour, 2, cv::LINE_AA, 0, 0.08);
    cv::arrowedLine(panel_, end, start, colour, 2, cv::LINE_AA, 0, 0.08);
  }

  void cross(const cv::Point2d& point) {
    cv::drawMarker(panel_, at(point), kBlack, cv::MARKER_CROSS, 34, 7, cv::LINE_AA);
    cv::drawMarker(panel_, at(point), kYellow, cv::MARKER_CROSS, 32, 3, cv::LINE_AA);
  }

  cv::Mat withTitle(const std::string& first, const std::string& second) const {
    constexpr int height = 64;
    cv::Mat titled;
    cv::copyMakeBorder(panel_, titled, height, 0, 0, 0, cv::BORDER_CONSTANT, kWhite);
    cv::putText(titled, first, {4, 24}, cv::FONT_HERSHEY_SIMPLEX, 0.68, kBlack, 2, cv::LINE_AA);
    cv::putText(titled, second, {4, 51}, cv::FONT_HERSHEY_SIMPLEX, 0.56, kBlack, 1, cv::LINE_AA);
    return titled;
  }

private:
  static constexpr int kSide = 440;

  // Square in a square photograph: from its top edge to below the chin.
  static cv::Rect2d partAround(const Head& head) {
    const double side = head.chin.y + 0.3 * (head.chin.y - head.bridge.y);
    return {head.bridge.x - side / 2, 0, side, side};
  }

  cv::Point at(const cv::Point2d& fraction) const {
    return {cvRound((fraction.x - part_.x) / part_.width * kSide),
            cvRound((fraction.y - part_.y) / part_.height * kSide)};
  }

  void write(const std::string& text, const cv::Point& place, const cv::Scalar& colour) {
    cv::putText(panel_, text, place, cv::FONT_HERSHEY_SIMPLEX, 0.55, kWhite, 4, cv::LINE_AA);
    cv::putText(panel_, text, place, cv::FONT_HERSHEY_SIMPLEX, 0.55, colour, 1, cv::LINE_AA);
  }

  cv::Rect2d part_;
  cv::Mat panel_;
};

/// How the top of a head comes about.
enum class Top { measured, guessed };

/// What a panel says of its head.
struct Caption {
  std::string title;
  std::string line;
  std::string top;
};

cv::Mat panelOf(const cv::Mat& picture, const Head& head, Top top, const Caption& caption) {
  // Where the top is a guess, the centre lies on the nose bridge, truncated to a pixel.
  const bool onBridge = std::abs(head.centre.y - head.bridge.y) * kMaxSide <= 1;
  if (onBridge != (top == Top::guessed)) {
    throw std::runtime_error("the head's top is no longer as the picture says: " + caption.title);
  }
  const cv::Scalar& colour = top == Top::guessed ? kRed : kBlue;
  const double column = head.box.x + 1.12 * head.box.width;
  HeadPanel panel(picture, head);
  panel.shadeBand(head);
  panel.rule(head.top(), caption.top, colour);
  panel.rule(head.bridge.y, "nose bridge", kBlack);
  panel.rule(head.chin.y, "chin", kBlack);
  panel.bracket(column, head.bridge.y, head.top(), colour);
  if (top == Top::guessed) {
    panel.bracket(column, head.chin.y, head.bridge.y, colour);
  }
  panel.cross(head.centre);
  return panel.withTitle(caption.title, caption.line);
}

void drawHeadCentres(const std::string& photo, const std::string& cutOut, const std::string& out) {
  const cv::Mat picture = readPicture(photo);
  const cv::Mat person = readPicture(cutOut, cv::IMREAD_UNCHANGED);

  // The same head before a plain wall, where colours can tell.
  const cv::Mat plain = over(person, cv::Mat(person.size(), CV_8UC3, cv::Scalar(190, 150, 90)));
  const std::string plainPhoto = cutOut + ".plain.png";
  writePicture(plainPhoto, plain);

  writePicture(
      out,
      besideEachOther({
          panelOf(over(person, chequers(person.size())), measuredByMask(photo), Top::measured,
                  {"By the mask", "measured: up to the person's end",
                   "top: first row without a person"}),
          panelOf(plain, measuredByColour(plainPhoto), Top::measured,
                  {"By colour", "measured: up to the plain background", "top: background begins"}),
          panelOf(
              picture, measuredByColour(photo), Top::guessed,
              {"By colour, no answer", "a guess: as far up as the chin is down", "assumed top"}),
      }));
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 7) {
    std::cerr << "usage: draw_pictures MODELS/ PHOTO ANNOTATED PERSON CLOSEUP OUT/" << std::endl;
    return 2;
  }
  try {
    if (initModelsAtPath(argv[1]) != 0) {
      throw std::runtime_error(std::string(argv[1]) + " lacks models");
    }
    drawFront(argv[3], argv[5], std::string(argv[6]) + "front.jpg");
    drawHeadCentres(argv[2], argv[4], std::string(argv[6]) + "head-centre.jpg");
  } catch (const std::exception& error) {
    std::cerr << "draw_pictures: " << error.what() << std::endl;
    return 1;
  }
  return 0;
}
