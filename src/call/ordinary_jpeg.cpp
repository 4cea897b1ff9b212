#include "call/ordinary_jpeg.h"

#if QOROCV460_WITH_LIBJPEG

#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h> // which wants FILE and size_t to be known
#include <memory>

namespace qorocv {

namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr unsigned kLongestMarker = 0xFFFF;

/// OpenCV's limit of pixels; its limits of width and height are beyond those of the format.
constexpr std::uint64_t kMostPixels = 1U << 30U;

/// Whether OpenCV may have other limits, which it has read when it was loaded.
bool areLimitsSet() {
  return std::getenv("OPENCV_IO_MAX_IMAGE_WIDTH") != nullptr ||
         std::getenv("OPENCV_IO_MAX_IMAGE_HEIGHT") != nullptr ||
         std::getenv("OPENCV_IO_MAX_IMAGE_PIXELS") != nullptr;
}

// Made when this library is loaded, as OpenCV is: who unsets the variables later on does not change
// what OpenCV has read.
const bool limitsWereSet = areLimitsSet();

/// The Exif data of a marker, a TIFF file behind six bytes of a name that OpenCV does not look at.
class Exif {
public:
  explicit Exif(const jpeg_marker_struct& marker)
      : size_(marker.data_length > kName ? marker.data_length - kName : 0),
        bytes_(size_ > 0 ? marker.data + kName : nullptr),
        littleEndian_(size_ > 1 && bytes_[0] == 'I' && bytes_[1] == 'I') {}

  /// Whether the first directory has an orientation that asks for turning. OpenCV does not get to
  /// it where it cannot read an earlier entry, so it may yet leave the picture as it is.
  bool mayAskForTurning() const {
    const std::size_t directory = number(kDirectoryAt, 4);
    const std::size_t entries = number(directory, 2);
    for (std::size_t i = 0; i < entries; ++i) {
      const std::size_t entry = directory + 2 + 12 * i;
      const std::uint32_t orientation = number(entry + 8, 2);
      if (number(entry, 2) == kOrientation && orientation >= 2 && orientation <= 8) {
        return true;
      }
    }
    return false;
  }

private:
  static constexpr std::size_t kName = 6;
  static constexpr std::size_t kDirectoryAt = 4;
  static constexpr std::uint32_t kOrientation = 0x0112;

  /// 0 where the data have ended.
  std::uint32_t number(std::size_t offset, std::size_t length) const {
    if (offset + length > size_) {
      return 0;
    }
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < length; ++i) {
      value = value << 8U | bytes_[offset + (littleEndian_ ? length - 1 - i : i)];
    }
    return value;
  }

  std::size_t size_;
  const JOCTET* bytes_;
  bool littleEndian_;
};

/// libjpeg's decoder, which gives up at the first warning.
class Decoder {
public:
  Decoder() {
    decoder_.err = jpeg_std_error(&errors_.manager);
    errors_.manager.error_exit = [](j_common_ptr decoder) { giveUp(decoder); };
    errors_.manager.emit_message = [](j_common_ptr decoder, int level) {
      if (level < 0) { // a warning; the others trace what goes on
        giveUp(decoder);
      }
    };
  }
  ~Decoder() { jpeg_destroy_decompress(&decoder_); }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  /// False where this is not an ordinary JPEG file.
  bool readHeader(std::FILE* file) {
    if (!succeeds([&] {
          jpeg_create_decompress(&decoder_);
          jpeg_stdio_src(&decoder_, file);
          jpeg_save_markers(&decoder_, kExifMarker, kLongestMarker);
          jpeg_read_header(&decoder_, TRUE);
        })) {
      return false;
    }
    // OpenCV looks at the first marker of the kind, whatever it is.
    const jpeg_marker_struct* const marker = decoder_.marker_list;
    return (decoder_.num_components == 1 || decoder_.num_components == 3) &&
           std::uint64_t{decoder_.image_width} * decoder_.image_height <= kMostPixels &&
           (marker == nullptr || !Exif(*marker).mayAskForTurning());
  }

  cv::Size size() const {
    return {static_cast<int>(decoder_.image_width), static_cast<int>(decoder_.image_height)};
  }

  /// Reads the pixels into a BGR picture of this size. False where the file is damaged.
  bool readPixels(cv::Mat& picture) {
    return succeeds([&] {
      decoder_.out_color_space = JCS_EXT_BGR;
      jpeg_start_decompress(&decoder_);
      while (decoder_.output_scanline < decoder_.output_height) {
        JSAMPROW row = picture.ptr(static_cast<int>(decoder_.output_scanline));
        jpeg_read_scanlines(&decoder_, &row, 1);
      }
      jpeg_finish_decompress(&decoder_);
    });
  }

private:
  /// libjpeg is given the first member, and a pointer to that is one to the whole.
  struct Errors {
    jpeg_error_mgr manager;
    std::jmp_buf wayOut;
  };

  [[noreturn]] static void giveUp(j_common_ptr decoder) {
    // libjpeg is C without tables to unwind by: an exception must not cross it.
    // NOLINTNEXTLINE(cert-err52-cpp)
    std::longjmp(reinterpret_cast<Errors*>(decoder->err)->wayOut, 1);
  }

  /// Takes a step that libjpeg may break off, and that therefore holds nothing to destroy.
  template <typename Step> bool succeeds(const Step& step) {
    if (setjmp(errors_.wayOut) != 0) { // NOLINT(cert-err52-cpp)
      return false;
    }
    step();
    return true;
  }

  jpeg_decompress_struct decoder_ = {};
  Errors errors_ = {};
};

} // namespace

cv::Mat readOrdinaryJpeg(const std::string& localPath) {
  const File file(limitsWereSet || areLimitsSet() ? nullptr : std::fopen(localPath.c_str(), "rb"));
  Decoder decoder;
  if (!file || !decoder.readHeader(file.get())) {
    return {};
  }
  cv::Mat picture(decoder.size(), CV_8UC3);
  return decoder.readPixels(picture) ? picture : cv::Mat();
}

} // namespace qorocv

#else

namespace qorocv {

cv::Mat readOrdinaryJpeg(const std::string&) {
  return {};
}

} // namespace qorocv

#endif
