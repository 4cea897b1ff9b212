// The eleven per-slot exports behind one call, for what holds of all of them.
#pragma once

#include "support/call_options.h"
#include "support/host.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

namespace qorocv::testing {

enum class DetectorKind { cascade, network };

struct SlotExport {
  const char* name;
  DetectorKind detector;
  std::size_t recordSize;
  bool fits;
  bool annotates;
  int (*call)(const char* photo, const HostVariables& host, const CallOptions& options);
};

/// How test names show an export.
inline void PrintTo(const SlotExport& slotExport, std::ostream* out) {
  *out << slotExport.name;
}

inline constexpr SlotExport kInTread01{
    "findQORFacesInTread01",
    DetectorKind::cascade,
    QOROCV460_FACE_RECORD,
    true,
    false,
    [](const char* photo, const HostVariables& host, const CallOptions& options) {
      return findQORFacesInTread01(photo, host.results, host.count, options.slot, options.maxSide,
                                   host.width, host.height);
    }};
inline constexpr SlotExport kInTreadDebug{
    "findQORFacesInTreadDebug",
    DetectorKind::cascade,
    QOROCV460_FACE_RECORD,
    true,
    true,
    [](const char* photo, const HostVariables& host, const CallOptions& options) {
      return findQORFacesInTreadDebug(photo, options.outputPath.c_str(), host.results, host.count,
                                      options.slot, options.maxSide, options.show, host.width,
                                      host.height);
    }};
inline constexpr SlotExport kHaarTr02{
    "findQORFacesHAARInTread_TR02",
    DetectorKind::cascade,
    QOROCV460_HEAD_CENTRE_RECORD,
    true,
    false,
    [](const char* photo, const HostVariables& host, const CallOptions& options) {
      return findQORFacesHAARInTread_TR02(
          photo, host.results, host.count, options.slot, options.maxSide,
          reinterpret_cast<void*>(options.reserved), host.width, host.height);
    }};
inline constexpr SlotExport kDun01{
    "findQORFacesDUNInTread01",
    DetectorKind::network,
    QOROCV460_FACE_RECORD,
    true,
    false,
    [](const char* photo, const HostVariables& host, const CallOptions& options) {
      return findQORFacesDUNInTread01(photo, host.results, host.count, options.modelKind,
                                      options.slot, options.maxSide, host.width, host.height);
    }};
inline constexpr SlotExport kDun01Debug{
    "findQORFacesDUNInTread01Debug",
    DetectorKind::network,
    QOROCV460_FACE_RECORD,
    true,
    true,
    [](const char* photo, const HostVariables& host, const CallOptions& options) {
      return findQORFacesDUNInTread01Debug(photo, options.outputPath.c_str(), options.show,
                                           host.results, host.count, options.modelKind,
                                           options.slot, options.maxSide, host.width, host.height);
    }};
inline constexpr SlotExport kDun02{
    "findQORFacesDUNInTread02",
    DetectorKind::network,
    QOROCV460_FACE_RECORD,
    false,
    false,
    [](const char* photo, const HostVariables& host, const CallOptions& options) {
      return findQORFacesDUNInTread02(photo, host.results, host.count, options.modelKind,
                                      options.slot, options.maxSide, host.width, host.height);
    }};
inline constexpr SlotExport kDunTr02{
    "findQORFacesDUNInTread_TR02",
    DetectorKind::network,
    QOROCV460_HEAD_CENTRE_RECORD,
    true,
    false,
    [](const char* photo, const HostVariables& host, const CallOptions& options) {
      return findQORFacesDUNInTread_TR02(
          photo, host.results, host.count, options.modelKind, options.slot, options.maxSide,
          reinterpret_cast<void*>(options.reserved), host.width, host.height);
    }};

inline constexpr SlotExport kHaarMask02{
    "findQORFacesHAARInTreadWithMask02",
    DetectorKind::cascade,
    QOROCV460_HEAD_CENTRE_RECORD,
    true,
    false,
    [](const char* photo, const HostVariables& host, const CallOptions& options) {
      return findQORFacesHAARInTreadWithMask02(
          photo, host.results, host.count, options.modelKind, options.slot, options.maxSide,
          static_cast<int>(options.reserved), host.width, host.height, host.view, host.mask,
          host.cropMask, host.cropBox);
    }};
inline constexpr SlotExport kDunMask01{
    "findQORFacesDUNInTreadWithMask01",
    DetectorKind::network,
    QOROCV460_HEAD_CENTRE_RECORD,
    true,
    false,
    [](const char* photo, const HostVariables& host, const CallOptions& options) {
      return findQORFacesDUNInTreadWithMask01(photo, host.results, host.count, options.modelKind,
                                              options.slot, options.maxSide, options.reserved,
                                              host.width, host.height, host.view, host.mask);
    }};
inline constexpr SlotExport kDunMask02{
    "findQORFacesDUNInTreadWithMask02",
    DetectorKind::network,
    QOROCV460_HEAD_CENTRE_RECORD,
    true,
    false,
    [](const char* photo, const HostVariables& host, const CallOptions& options) {
      return findQORFacesDUNInTreadWithMask02(photo, host.results, host.count, options.modelKind,
                                              options.slot, options.maxSide, options.reserved,
                                              host.width, host.height, host.view, host.mask,
                                              host.cropMask, host.cropBox);
    }};
inline constexpr SlotExport kDunTile{
    "findQORMulitFacesDUNInTread_TR02",
    DetectorKind::network,
    QOROCV460_HEAD_CENTRE_RECORD,
    true,
    false,
    [](const char* photo, const HostVariables& host, const CallOptions& options) {
      return findQORMulitFacesDUNInTread_TR02(
          photo, host.results, host.count, options.tileCol, options.gridCols, options.tileRow,
          options.gridRows, host.tileWidth, host.tileHeight, host.tileLeft, host.tileTop,
          options.modelKind, options.slot, options.maxSide, options.reserved, host.width,
          host.height);
    }};

inline constexpr SlotExport kMaskExports[] = {kHaarMask02, kDunMask01, kDunMask02};

inline constexpr SlotExport kSlotExports[] = {kInTread01,  kInTreadDebug, kHaarTr02, kDun01,
                                              kDun01Debug, kDun02,        kDunTr02,  kHaarMask02,
                                              kDunMask01,  kDunMask02,    kDunTile};

inline bool makesMask(const SlotExport& slotExport) {
  return std::any_of(std::begin(kMaskExports), std::end(kMaskExports),
                     [&](const SlotExport& other) { return other.name == slotExport.name; });
}

/// One call of a per-slot export on fresh variables.
inline Outcome detect(const SlotExport& slotExport, const std::filesystem::path& photo,
                      const CallOptions& options = {}, int capacity = 1) {
  return call(
      [&](const HostVariables& host) {
        return slotExport.call(photo.u8string().c_str(), host, options);
      },
      capacity);
}

} // namespace qorocv::testing
