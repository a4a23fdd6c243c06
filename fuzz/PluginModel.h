#pragma once

#include "gateway/hostd/DataModel.h"
#include "wifi/QuorvelWiFiTable.h"

namespace quorvel::fuzz {

// The plug-in's own table, as the console's walker takes it.
[[nodiscard]] inline const hostd::DataModel& pluginModel() {
    static const hostd::DataModel model(
        {reinterpret_cast<const hostd::TableEntry*>(&gQuorvelWiFiDataModelTable), kParametersInTable});
    return model;
}

}  // namespace quorvel::fuzz
