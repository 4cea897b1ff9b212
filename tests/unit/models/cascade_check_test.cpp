// Which cascades would lead OpenCV out of its arrays.
#include "models/cascade_check.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <string>

namespace qorocv {
namespace {

// Two features in a window of 20 x 20, and one tree of two nodes: the second hangs on the left of the
// first. Leaves 0 to 2 are -0, -1 and -2.
constexpr const char* kSound = R"(<?xml version="1.0"?>
<opencv_storage><cascade>
<stageType>BOOST</stageType><featureType>HAAR</featureType><height>20</height><width>20</width>
<stageParams><maxWeakCount>1</maxWeakCount></stageParams>
<featureParams><maxCatCount>0</maxCatCount></featureParams>
<stageNum>1</stageNum>
<stages><_><maxWeakCount>1</maxWeakCount><stageThreshold>0.</stageThreshold><weakClassifiers>
<_><internalNodes>1 0 0 0.5 -1 -2 1 0.5</internalNodes><leafValues>-1. 1. 2.</leafValues></_>
</weakClassifiers></_></stages>
<features>
<_><rects><_>0 0 20 20 -1.</_><_>10 0 10 20 2.</_></rects></_>
<_><rects><_>4 0 6 4 -1.</_></rects><tilted>1</tilted></_>
</features></cascade></opencv_storage>
)";

bool isSoundWith(const std::string& part, const std::string& replacement) {
  std::string text = kSound;
  const std::size_t at = text.find(part);
  EXPECT_NE(at, std::string::npos) << part;
  text.replace(at, part.size(), replacement);
  const cv::FileStorage file(text, cv::FileStorage::READ | cv::FileStorage::MEMORY);
  return isSoundCascade(file.getFirstTopLevelNode());
}

TEST(CascadeCheck, passesWhatLeadsSomewhere) {
  EXPECT_TRUE(isSoundWith("HAAR", "HAAR"));
  EXPECT_TRUE(isSoundWith("4 0 6 4", "4 10 6 4")); // the tilted rectangle's last row: 10 + 6 + 4
  EXPECT_TRUE(isSoundWith("1 0 0 0.5 -1 -2 1 0.5", "-2 1 0 0.5 0 -1 1 0.5"));
}

TEST(CascadeCheck, findsNodesThatLeadNowhere) {
  const std::string nodes = "1 0 0 0.5 -1 -2 1 0.5";
  EXPECT_FALSE(isSoundWith(nodes, "2 0 0 0.5 -1 -2 1 0.5")); // there is no third node
  EXPECT_FALSE(isSoundWith(nodes, "1 0 0 0.5 1 -2 1 0.5"));  // round and round
  EXPECT_FALSE(isSoundWith(nodes, "1 0 0 0.5 -1 -3 1 0.5")); // there is no fourth leaf
  EXPECT_FALSE(isSoundWith(nodes, "1 0 2 0.5 -1 -2 1 0.5")); // there is no third feature
  EXPECT_FALSE(isSoundWith(nodes, "1 0 -1 0.5 -1 -2 1 0.5"));
  EXPECT_FALSE(isSoundWith(nodes, "1 0 0 0.5 -1 -2 1")); // ends within a node
  EXPECT_FALSE(isSoundWith(nodes, "1 0 x 0.5 -1 -2 1 0.5"));
  EXPECT_FALSE(isSoundWith("-1. 1. 2.", "-1. 1."));
  EXPECT_FALSE(isSoundWith("-1. 1. 2.", "-1. 1. 2. 3."));
  EXPECT_FALSE(isSoundWith("<leafValues>-1. 1. 2.</leafValues>", ""));
  EXPECT_FALSE(isSoundWith("<maxCatCount>0<", "<maxCatCount>1<"));
}

TEST(CascadeCheck, findsFeaturesThatReachOutOfTheWindow) {
  EXPECT_FALSE(isSoundWith("10 0 10 20", "11 0 10 20"));
  EXPECT_FALSE(isSoundWith("10 0 10 20", "10 1 10 20"));
  EXPECT_FALSE(isSoundWith("10 0 10 20", "-1 0 10 20"));
  EXPECT_FALSE(isSoundWith("10 0 10 20", "10 0 -1 20"));
  EXPECT_FALSE(isSoundWith("10 0 10 20 2.", "10 0 10"));
  EXPECT_FALSE(isSoundWith("4 0 6 4", "3 0 6 4"));  // tilted, its left corner is at -1
  EXPECT_FALSE(isSoundWith("4 0 6 4", "4 11 6 4")); // and here its lowest row at 21
  EXPECT_FALSE(isSoundWith("<width>20", "<width>19"));
  const std::string rect = "<_>0 0 20 20 -1.</_>";
  EXPECT_FALSE(isSoundWith(rect, rect + rect + rect)); // four in a feature
}

TEST(CascadeCheck, leavesOtherFilesToOpenCv) {
  EXPECT_TRUE(isSoundWith("HAAR", "LBP"));
  EXPECT_TRUE(isSoundWith("BOOST", "FERN"));
  EXPECT_TRUE(isSoundCascade(cv::FileNode()));
}

} // namespace
} // namespace qorocv
