#include "faces/lbf_reader.h"

#include "arithmetic/base64.h"
#include "faces/text_lines.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <optional>
#include <utility>

namespace qorocv {

namespace {

constexpr int kPoints = static_cast<int>(LbfShape::kPoints);
constexpr int kCoordinates = static_cast<int>(kLbfCoordinates);

constexpr const char* kBase64Data = "   data: !!binary |";

/// The file, read from front to back. Whatever does not stand there as it must is damage.
class LbfFile {
public:
  explicit LbfFile(const std::string& path) : path_(path), lines_(path) {
    if (!lines_.isOpen()) {
      CV_Error(cv::Error::StsBadArg, path + ": the landmark model cannot be opened");
    }
  }

  /// The next line as it stands; an empty one behind the last.
  std::string_view line() { return lines_.next().value_or(std::string_view()); }

  /// The next line with words in it, as OpenCV writes them: one blank behind a key, and none at the
  /// end. An empty one behind the last.
  const std::string& words() {
    std::optional<std::string_view> line;
    do {
      line = lines_.next();
    } while (line && saysNothing(*line));
    words_ = line.value_or(std::string_view());
    words_.erase(words_.find_last_not_of(' ') + 1);
    const std::size_t key = words_.find(": ");
    if (key != std::string::npos) {
      words_.erase(key + 2, words_.find_first_not_of(' ', key + 2) - (key + 2));
    }
    return words_;
  }

  /// Whether the last line has its end.
  bool isWhole() const { return lines_.isWhole(); }

  void expect(const std::string& text) {
    if (words() != text) {
      refuse("not \"" + text + "\"");
    }
  }

  /// The line "KEY: VALUE" with its number.
  void expect(const std::string& key, int value) { expect(key + ": " + std::to_string(value)); }

  /// The lines before the numbers of a matrix that has a name.
  void expectMatrix(const std::string& name, int rows, int columns) {
    expect(name + ": !!opencv-matrix");
    expect("   rows", rows);
    expect("   cols", columns);
    expect("   dt: d");
    expect(kBase64Data);
  }

  /// A block of base64 in lines of this indentation: `count` numbers behind a head that names their
  /// type. They are the caller's until the next block of the type is read.
  const double* doubles(std::size_t count, std::size_t indentation) {
    return readBlock(doubles_, "1d", count, indentation);
  }
  const std::int32_t* integers(std::size_t count, std::size_t indentation) {
    return readBlock(integers_, "1i", count, indentation);
  }

  [[noreturn]] void refuse(const std::string& what) const {
    CV_Error(cv::Error::StsParseError,
             path_ + ", line " + std::to_string(lines_.number()) + ": " + what);
  }

private:
  static bool saysNothing(std::string_view line) {
    return line.find_first_not_of(' ') == std::string_view::npos || line.front() == '#';
  }

  // The type, filled up with spaces to a multiple of the size of every number.
  static constexpr std::size_t kHeadBytes = 24;

  template <typename Number>
  const Number* readBlock(std::vector<Number>& block, std::string_view type, std::size_t count,
                          std::size_t indentation) {
    static_assert(kHeadBytes % sizeof(Number) == 0);
    block.resize(kHeadBytes / sizeof(Number) + count);
    auto* bytes = reinterpret_cast<std::uint8_t*>(block.data());
    readBytes(bytes, block.size() * sizeof(Number), indentation);

    std::string head(type);
    head.resize(kHeadBytes, ' ');
    if (std::memcmp(bytes, head.data(), kHeadBytes) != 0) {
      refuse("the numbers above are not of the type " + std::string(type));
    }
    return block.data() + kHeadBytes / sizeof(Number);
  }

  void readBytes(std::uint8_t* bytes, std::size_t size, std::size_t indentation) {
    // OpenCV writes 48 bytes a line; other writers have other lengths, always whole groups of
    // three. All lines of a block but the last are as long as the first.
    std::size_t perLine = 0;
    while (size > 0) {
      const std::string_view text = line();
      const auto isSpace = [](char c) { return c == ' '; };
      if (text.size() <= indentation ||
          !std::all_of(text.begin(), text.begin() + indentation, isSpace)) {
        refuse("no line of base64");
      }
      const std::string_view digits = text.substr(indentation);
      perLine = perLine == 0 ? digits.size() / 4 * 3 : perLine;
      const std::size_t ofLine = std::min(size, perLine);
      if (base64Length(ofLine) != digits.size() || !decodeBase64(digits, bytes, ofLine)) {
        refuse("not the base64 of " + std::to_string(ofLine) + " bytes");
      }
      bytes += ofLine;
      size -= ofLine;
    }
  }

  std::string path_;
  TextLines lines_;
  std::string words_;
  std::vector<double> doubles_;
  std::vector<std::int32_t> integers_;
};

// ---- The parameters

/// What the file says first.
struct Parameters {
  int stages;
  int treesPerLandmark;
  int depth;
  int landmarks;
};

bool areKnown(const Parameters& parameters) {
  const auto isWithin = [](int value, int first, int last) {
    return first <= value && value <= last;
  };
  // A tree of one level compares nothing.
  return isWithin(parameters.stages, 1, 32) && isWithin(parameters.treesPerLandmark, 1, 32) &&
         isWithin(parameters.depth, 2, 8) && parameters.landmarks == kPoints;
}

/// The number of a line "KEY: VALUE".
int numberOf(std::string_view line, const std::string& key, const LbfFile& file) {
  const std::string start = key + ": ";
  const std::string digits(line.substr(std::min(start.size(), line.size())));
  const bool isNumber = line.substr(0, start.size()) == start && !digits.empty() &&
                        digits.size() < 10 &&
                        digits.find_first_not_of("0123456789") == std::string::npos;
  const int number = isNumber ? std::stoi(digits) : 0;
  if (number == 0) {
    file.refuse("not \"" + start + "\" with a number");
  }
  return number;
}

/// Nothing where the file begins in another way.
std::optional<Parameters> readParameters(LbfFile& file) {
  if (file.line() != "%YAML:1.0" || file.words() != "---") {
    return std::nullopt;
  }
  const std::string& first = file.words();
  if (first.substr(0, first.find(':')) != "stages_n") {
    return std::nullopt;
  }
  Parameters parameters{};
  parameters.stages = numberOf(first, "stages_n", file);
  parameters.treesPerLandmark = numberOf(file.words(), "tree_n", file);
  parameters.depth = numberOf(file.words(), "tree_depth", file);
  parameters.landmarks = numberOf(file.words(), "n_landmarks", file);
  return parameters;
}

// ---- The numbers

const double* finiteDoubles(LbfFile& file, std::size_t count, std::size_t indentation) {
  const double* const numbers = file.doubles(count, indentation);
  if (!std::all_of(numbers, numbers + count, [](double n) { return std::isfinite(n); })) {
    file.refuse("a number above is not finite");
  }
  return numbers;
}

constexpr std::size_t kMatrixIndentation = 6;
constexpr std::size_t kListIndentation = 3;

/// Nothing where the shape has other landmarks, or decimal numbers.
std::optional<LbfShape> readMeanShape(LbfFile& file, int landmarks) {
  file.expect("regressor_meanshape: !!opencv-matrix");
  file.expect("   rows", landmarks);
  file.expect("   cols", 2);
  file.expect("   dt: d");
  const std::string_view data = file.words();
  const std::string_view decimals = "   data: [";
  if (landmarks != kPoints || data.substr(0, decimals.size()) == decimals) {
    return std::nullopt;
  }
  if (data != kBase64Data) {
    file.refuse(std::string("not \"") + kBase64Data + "\"");
  }
  const double* const numbers = finiteDoubles(file, kCoordinates, kMatrixIndentation);
  LbfShape shape;
  for (std::size_t i = 0; i < LbfShape::kPoints; ++i) {
    shape.x[i] = numbers[2 * i];
    shape.y[i] = numbers[2 * i + 1];
  }
  return shape;
}

/// What a stage has in the file.
struct StageNumbers {
  std::vector<LbfSplit<double>> splits;
  std::vector<std::int16_t> thresholds;

  /// A row for each coordinate, x and y of a landmark in turn, and a column for each leaf.
  cv::Mat weights;
};

/// Adds a tree to the stage. The file has as many rows for its leaves as for its splits, which mean
/// nothing.
void readTree(LbfFile& file, const std::string& number, int leaves, StageNumbers& stage) {
  const int rows = 2 * leaves;
  file.expectMatrix("tree_" + number, rows, 4);
  const double* split = finiteDoubles(file, static_cast<std::size_t>(rows) * 4, kMatrixIndentation);
  file.expect("thresholds_" + number + ": !!binary |");
  const std::int32_t* const thresholds =
      file.integers(static_cast<std::size_t>(rows), kListIndentation);
  for (int i = 0; i < leaves; ++i, split += 4) {
    stage.splits.push_back({split[0], split[1], split[2], split[3]});
    // Differences are -255 to 255: beyond 256, thresholds are all the same.
    stage.thresholds.push_back(static_cast<std::int16_t>(std::clamp(thresholds[i], -256, 256)));
  }
}

/// The weights are the file's until its next block.
StageNumbers readStage(LbfFile& file, int stageNumber, const LbfModel& model) {
  StageNumbers stage;
  const int leaves = model.trees() * model.leaves;
  stage.splits.reserve(static_cast<std::size_t>(leaves));
  stage.thresholds.reserve(static_cast<std::size_t>(leaves));
  for (int landmark = 0; landmark < kPoints; ++landmark) {
    for (int tree = 0; tree < model.treesPerLandmark; ++tree) {
      const std::string number = cv::format("%d_%d_%d", stageNumber, landmark, tree);
      readTree(file, number, model.leaves, stage);
    }
  }
  file.expectMatrix("weights_" + std::to_string(stageNumber), kCoordinates, leaves);
  const double* const weights =
      finiteDoubles(file, kLbfCoordinates * static_cast<std::size_t>(leaves), kMatrixIndentation);
  stage.weights = cv::Mat(kCoordinates, leaves, CV_64F, const_cast<double*>(weights));
  return stage;
}

// ---- What may follow

constexpr const char* kDocumentEnd = "...";

bool beginsAKey(const std::string& line) {
  const char first = line.front();
  return (first >= 'a' && first <= 'z') || (first >= 'A' && first <= 'Z') || first == '_';
}

// ---- The stages as the fitter wants them

// Where the processor is told to flush them to zero, denormal floats are not what doubles of their
// value are.
bool isFloat(double number) {
  const double magnitude = std::fabs(number);
  return number == 0. || (FLT_MIN <= magnitude && magnitude <= FLT_MAX &&
                          static_cast<double>(static_cast<float>(number)) == number);
}

bool isInFloats(const StageNumbers& stage) {
  const auto* const weights = stage.weights.ptr<double>();
  return std::all_of(weights, weights + stage.weights.total(), isFloat) &&
         std::all_of(stage.splits.begin(), stage.splits.end(), [](const LbfSplit<double>& split) {
           return isFloat(split.x1) && isFloat(split.y1) && isFloat(split.x2) && isFloat(split.y2);
         });
}

template <typename Number> LbfStageOf<Number> stageOf(StageNumbers&& numbers) {
  LbfStageOf<Number> stage;
  stage.splits.reserve(numbers.splits.size());
  for (const auto& [x1, y1, x2, y2] : numbers.splits) {
    stage.splits.push_back({static_cast<Number>(x1), static_cast<Number>(y1),
                            static_cast<Number>(x2), static_cast<Number>(y2)});
  }
  stage.thresholds = std::move(numbers.thresholds);

  cv::Mat_<Number> weights = numbers.weights; // converted where it must be
  stage.steps.resize(static_cast<std::size_t>(weights.cols));
  LbfOffsets<Number>& first = stage.steps.front().offsets;
  for (int axis = 0; axis < 2; ++axis) {
    // Every other row: all x or all y.
    const cv::Mat_<Number> rows(kPoints, weights.cols, weights[axis], 2 * weights.step);
    cv::Mat_<Number> columns(weights.cols, kPoints,
                             &first[static_cast<std::size_t>(axis) * LbfShape::kPoints],
                             sizeof(LbfStep<Number>));
    cv::transpose(rows, columns);
  }
  return stage;
}

} // namespace

std::shared_ptr<const LbfModel> readLbfModel(const std::string& path) {
  LbfFile file(path);
  const std::optional<Parameters> parameters = readParameters(file);
  if (!parameters) {
    return nullptr;
  }
  const std::optional<LbfShape> meanShape = readMeanShape(file, parameters->landmarks);
  if (!meanShape || !areKnown(*parameters)) {
    return nullptr;
  }
  const auto model = std::make_shared<LbfModel>();
  model->treesPerLandmark = parameters->treesPerLandmark;
  model->depth = parameters->depth;
  model->leaves = 1 << (parameters->depth - 1);
  model->meanShape = *meanShape;
  model->normalMeanShape = normalised(*meanShape);
  model->stages.reserve(static_cast<std::size_t>(parameters->stages));
  for (int i = 0; i < parameters->stages; ++i) {
    StageNumbers stage = readStage(file, i, *model);
    if (isInFloats(stage)) {
      model->stages.emplace_back(stageOf<float>(std::move(stage)));
    } else {
      model->stages.emplace_back(stageOf<double>(std::move(stage)));
    }
  }
  const std::string& behind = file.words();
  if (!behind.empty()) {
    if (!beginsAKey(behind) && behind != kDocumentEnd) {
      file.refuse("more than the model");
    }
    return nullptr;
  }
  if (!file.isWhole()) {
    file.refuse("the line has no end"); // as OpenCV has it
  }
  return model;
}

} // namespace qorocv
