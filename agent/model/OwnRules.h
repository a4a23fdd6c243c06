#pragma once

#include <string>
#include <vector>

#include "agent/Context.h"
#include "agent/Problem.h"

namespace quorvel::agent {

constexpr std::size_t kMaxSubscriptions = 1000;
constexpr std::size_t kMaxControllers = 100;
/// Of every other table, or of one parent's share of it.
constexpr std::size_t kMaxRows = 100;

constexpr const char* kControllers = "Device.LocalAgent.Controller.";
constexpr const char* kSubscriptions = "Device.LocalAgent.Subscription.";
constexpr const char* kRequests = "Device.LocalAgent.Request.";
constexpr const char* kAgentMtps = "Device.LocalAgent.MTP.";
constexpr const char* kMqttClients = "Device.MQTT.Client.";

/// Returns 7005 when a table is full.
[[nodiscard]] Problem checkRoom(const Store& store, const std::string& table);

/// Gives a new row what is not left to the controller: Recipient, CreationDate, and every key that was not given.
/// `given`: the parameters that the controller gave.
void completeRow(Context& context, const std::string& row, const std::vector<std::string>& given,
                 const Originator& originator);

/// Says what is wrong with a row as it is now: keys that another row has, references to rows that do not exist, values
/// that make no sense together. The paths are parameter names.
[[nodiscard]] std::vector<PathProblem> checkRow(const Store& store, const std::string& row);

/// Removes a row, what belongs to it elsewhere (a controller's subscriptions and requests) and references to it.
void removeRow(Store& store, const std::string& row);

/// Says what is wrong with an Endpoint ID; empty: nothing.
[[nodiscard]] std::string checkEndpointId(const std::string& id);

/// Returns a row's path as values of reference parameters have it: without the last dot.
[[nodiscard]] std::string referenceTo(std::string_view row);

}  // namespace quorvel::agent
