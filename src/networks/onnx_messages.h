// What is looked at in an ONNX file. The names and numbers are those of onnx.proto.
#pragma once

#include "networks/protobuf_message.h"

#include <vector>

namespace qorocv::networks::onnx {

inline const std::vector<ProtobufSchema> kTensor{
    {1, "dims", ProtobufKind::integers},       {2, "data_type", ProtobufKind::integers},
    {4, "float_data", ProtobufKind::floats},   {5, "int32_data", ProtobufKind::integers},
    {7, "int64_data", ProtobufKind::integers}, {8, "name", ProtobufKind::text},
    {9, "raw_data", ProtobufKind::text},       {10, "double_data", ProtobufKind::doubles}};
inline const std::vector<ProtobufSchema> kAttribute{{1, "name", ProtobufKind::text},
                                                    {3, "i", ProtobufKind::integers},
                                                    {5, "t", ProtobufKind::message, &kTensor},
                                                    {8, "ints", ProtobufKind::integers}};
inline const std::vector<ProtobufSchema> kNode{{1, "input", ProtobufKind::text},
                                               {2, "output", ProtobufKind::text},
                                               {3, "name", ProtobufKind::text},
                                               {4, "op_type", ProtobufKind::text},
                                               {5, "attribute", ProtobufKind::message, &kAttribute},
                                               {7, "domain", ProtobufKind::text}};
inline const std::vector<ProtobufSchema> kValueInfo{{1, "name", ProtobufKind::text}};
inline const std::vector<ProtobufSchema> kGraph{{1, "node", ProtobufKind::message, &kNode},
                                                {5, "initializer", ProtobufKind::message, &kTensor},
                                                {11, "input", ProtobufKind::message, &kValueInfo},
                                                {12, "output", ProtobufKind::message, &kValueInfo}};
inline const std::vector<ProtobufSchema> kModel{{7, "graph", ProtobufKind::message, &kGraph}};

enum DataType {
  floats = 1,
  unsignedBytes = 2,
  bytes = 3,
  integers = 6,
  longIntegers = 7,
  doubles = 11
};

} // namespace qorocv::networks::onnx
