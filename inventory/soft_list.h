#pragma once

#include <memory>
#include <vector>

#include "inventory/soft_info.h"

namespace varnel {

// The inventory's records in enumeration order; a record's index here is its
// identity everywhere else.
using SoftList = std::vector<std::unique_ptr<TSoftInfo>>;

}  // namespace varnel
