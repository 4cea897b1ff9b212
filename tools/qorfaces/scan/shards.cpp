#include "shards.h"

#include <boost/crc.hpp>

namespace qorfaces {

bool isIn(const Shard& shard, const std::string& name) {
  boost::crc_32_type crc;
  crc.process_bytes(name.data(), name.size());
  return crc.checksum() % static_cast<unsigned>(shard.count) ==
         static_cast<unsigned>(shard.index - 1);
}

} // namespace qorfaces
