#pragma once

#include "DataModel.h"
#include "QuorvelWiFiTable.h"

namespace quorvel::fuzz {

// The plug-in's own table, as the console's walker takes it.
[[nodiscard]] inline const host::DataModel& pluginModel() {
    static const host::DataModel model(
        {reinterpret_cast<const host::TableEntry*>(&gQuorvelWiFiDataModelTable), kParametersInTable});
    return model;
}

}  // namespace quorvel::fuzz
