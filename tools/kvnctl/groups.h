// The settings groups that `kvnctl get|set|reset GROUP` reaches, each as its record's
// JSON form. Groups held in a single number read and write {"value": N}.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "records.h"

namespace kvnctl {

struct Group {
    std::string name;
    std::function<int32_t(kvn_device_conn*, json&)> get;
    std::function<int32_t(kvn_device_conn*, const json&)> set;  // empty: read only
    std::function<int32_t(kvn_device_conn*, uint32_t index)> reset;  // empty: no reset
};

const std::vector<Group>& groups();
const Group* find_group(const std::string& name);

}  // namespace kvnctl
