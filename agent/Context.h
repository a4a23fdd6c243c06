#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "agent/Config.h"
#include "agent/Gateway.h"
#include "agent/model/Schema.h"
#include "agent/model/Store.h"
#include "agent/path/Resolver.h"
#include "agent/wifi/WifiView.h"

namespace quorvel::agent {

/// The state that the handlers of Messages share.
struct Context {
    Context(Config configuration, Gateway& library, std::function<void(const Stations::Difference&)> noticed)
        : config(std::move(configuration)),
          gateway(library),
          schema(std::make_unique<Schema>(std::vector<TableRow>{})),
          store(*schema),
          wifi(library, std::move(noticed)),
          resolver(store, wifi) {
        wifi.adopt(*schema);
    }

    Config config;
    Gateway& gateway;
    std::unique_ptr<Schema> schema;
    Store store;
    WifiView wifi;
    Resolver resolver;
    Queue writes;                 ///< Sets of the library's parameters, one after the other
    BoardInstant now{};           ///< of the thing that is being done
    std::vector<Change> changes;  ///< committed, and not yet told to subscribers
    std::function<void(const std::string&)> log = [](const std::string&) {};
};

/// The controller that a Message comes from.
struct Originator {
    std::string row;  ///< "Device.LocalAgent.Controller.1."
    std::string endpointId;
};

}  // namespace quorvel::agent
