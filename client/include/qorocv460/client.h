// QOROCV460 for C++: photographs and faces as values, errors as values, and slots with a thread each.
// Over qorocv460.h alone: what the functions return is what stands here.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <qorocv460/qorocv460.h>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace qorocv::client {

/// A position as fractions of a photograph's width and height, 0 at its left and top. Positions may
/// lie outside the photograph.
struct Point {
  double x;
  double y;
};

/// A position in pixels of a photograph.
struct Pixel {
  double x;
  double y;
};

struct Box {
  Point leftTop;
  Point rightBottom;
};

struct Face {
  Box box;
  Point noseBridge; // the top of the bridge, between the eyes
  Point chin;
  std::optional<Point> headCentre; // where it was asked for
  /// Whether the top of the head was measured. Where it was not, the length from nose bridge to
  /// chin stands in for it, and the head centre lies at the height of the nose bridge. A measured
  /// centre that lies there by chance cannot be told from that. False without a head centre.
  bool headTopMeasured = false;
  std::vector<Point> landmarks; // all 68, where they were asked for
};

struct Photo {
  int width = 0; // pixels
  int height = 0;
  int found = 0;           // boxes, which may be more than there are faces to report
  std::vector<Face> faces; // at most QOROCV460_MAX_RECORDS

  Pixel inPixels(const Point& point) const { return {point.x * width, point.y * height}; }
};

/// What a photograph's call fills besides faces where the heads are measured by person masks. The
/// arrays are laid out as qorocv460.h says.
struct Masks {
  std::vector<unsigned char> view;
  std::vector<unsigned char> mask;
  std::vector<unsigned char> cropMask;
  /// Left, top, width and height, fractions of the photograph. All 0 where there is no closer mask.
  double cropBox[QOROCV460_CROP_BOX] = {};
};

struct MaskedPhoto {
  Photo photo;
  Masks masks;
};

/// One tile of a photograph, and the faces in it in fractions of the whole photograph.
struct Tile {
  Box place; // in the photograph, fractions
  Photo photo;
};

enum class ErrorKind {
  unreadable, // the file cannot be read as a picture
  library,    // the library threw: a model is missing or a picture cannot be worked on; or the
              // request or its slot was refused
};

struct Error {
  ErrorKind kind;
  std::string text;
};

/// A value, or why there is none.
template <class Value> class Result {
public:
  Result(Value value) : content_(std::move(value)) {}
  Result(Error error) : content_(std::move(error)) {}

  explicit operator bool() const { return std::holds_alternative<Value>(content_); }
  /// The value. Where there is none, these throw std::bad_variant_access.
  const Value& operator*() const { return std::get<Value>(content_); }
  Value& operator*() { return std::get<Value>(content_); }
  const Value* operator->() const { return &std::get<Value>(content_); }
  Value* operator->() { return &std::get<Value>(content_); }
  /// Why there is no value. Where there is one, this throws std::bad_variant_access.
  const Error& error() const { return std::get<Error>(content_); }

private:
  std::variant<Value, Error> content_;
};

enum class Detector {
  haar,  // the Haar cascade
  ssd,   // the SSD network, Caffe
  ssdTf, // the SSD network, TensorFlow
};

enum class HeadCentres {
  none,
  byColour, // the colours above the face
  byMask,   // the person mask, or a closer one of an only face
};

/// The shared cascade and fitter, in place of a slot. One thread at a time.
constexpr int kSharedPair = 0;

/// How a photograph is looked at.
struct Request {
  Detector detector = Detector::ssd;
  /// The longer side is scaled to so many pixels; 0: the photograph's own size. Enough for a portrait
  /// and for a small group: a large photograph at its own size takes the cascade many times as long,
  /// and shows it more of what is no face.
  int maxSide = 1000;
  HeadCentres headCentres = HeadCentres::none;
  bool landmarks = false; // all 68; with the Haar cascade on the shared pair, without head centres
  /// Where to write the picture as it is drawn, UTF-8; empty: nowhere. Without head centres.
  std::string annotatedCopy;
};

/// The models that a directory lacks, as the digits of initModelsAtPath: 0 when all are there. Sets
/// the library's paths in any case. `directory` is UTF-8, with or without a separator at its end; an
/// empty one is the current one. Switches the process to the user's locale, as a photograph does.
int placeModels(std::string directory);

// SLOTS. One thread at a time may use a slot, or the shared pair; the slots of a SlotPool are its
// threads' alone. A slot keeps the kind of SSD network that its first request for one names. What
// breaks this is refused with an error. Of calls of the library itself, beside the client, nothing is
// known here.

/// Loads the shared pair, so that a bad model shows before any photograph. Nothing where it is loaded.
std::optional<Error> loadSharedPair();

/// Looks at a photograph, named in UTF-8, on a slot or on the shared pair. Head centres by mask are
/// analyseWithMasks' and give an error here, as does every other request that no function of the
/// library answers.
Result<Photo> analyse(const std::string& path, const Request& request, int slot);

/// The same with head centres by mask, and the masks. On a slot only.
Result<MaskedPhoto> analyseWithMasks(const std::string& path, const Request& request, int slot);

/// A cell of a grid over a photograph; tiles are one and a half cells wide and high. Columns and
/// rows count from 1.
struct Cell {
  int column;
  int columns;
  int row;
  int rows;
};

/// Looks at one tile with an SSD network, with head centres by colour. On a slot only.
Result<Tile> analyseTile(const std::string& path, const Cell& cell, const Request& request,
                         int slot);

/// Slots, each with a thread of its own, that take what is to be done in the order in which it
/// comes.
class SlotPool {
public:
  /// The first free slots, up to `slots`, which is brought into 1 to 9: those that no other pool has
  /// and no thread is at work on. With a detector named, none that keeps the other kind of network:
  /// a host that uses both kinds has a pool for each. Throws std::runtime_error where there is none,
  /// and std::system_error where a thread cannot be started.
  explicit SlotPool(int slots, std::optional<Detector> detector = std::nullopt);
  /// Waits until all is done.
  ~SlotPool();
  SlotPool(const SlotPool&) = delete;
  SlotPool& operator=(const SlotPool&) = delete;

  int slots() const { return static_cast<int>(threads_.size()); }

  /// Calls `work(slot)` on the next free slot's thread. What it throws, the future throws.
  template <class Work> auto submit(Work work) -> std::future<std::invoke_result_t<Work, int>> {
    using Answer = std::invoke_result_t<Work, int>;
    // std::function wants what can be copied.
    auto task = std::make_shared<std::packaged_task<Answer(int)>>(std::move(work));
    std::future<Answer> answer = task->get_future();
    add([task](int slot) { (*task)(slot); });
    return answer;
  }

private:
  void add(std::function<void(int)> task);
  void work(int slot);
  void end();

  const std::vector<int> slots_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void(int)>> tasks_;
  bool ending_ = false;
  std::vector<std::thread> threads_;
};

} // namespace qorocv::client
