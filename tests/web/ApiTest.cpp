#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/web/Boards.h"
#include "web/server/Site.h"

namespace quorvel::web_test {
namespace {

using Json = nlohmann::json;

Json document() {
    std::ifstream in(QUORVEL_OPEN_API);
    return Json::parse(in);
}

bool hasType(const Json& value, const std::string& type) {
    if (type == "integer")
        return value.is_number_integer() || (value.is_number() && value == static_cast<std::int64_t>(value));
    if (type == "number") return value.is_number();
    if (type == "string") return value.is_string();
    if (type == "boolean") return value.is_boolean();
    if (type == "array") return value.is_array();
    if (type == "object") return value.is_object();
    return type == "null" && value.is_null();
}

/// Returns what is wrong with a value by a schema of the document; the empty text when nothing is.
std::string wrong(const Json& api, const Json& schema, const Json& value, const std::string& place);

std::string wrongMember(const Json& api, const Json& schema, const Json& value, const std::string& place) {
    for (const Json& name : schema.value("required", Json::array())) {
        if (!value.contains(name)) return place + " lacks " + name.get<std::string>();
    }
    const Json properties = schema.value("properties", Json::object());
    for (const auto& [name, member] : value.items()) {
        const Json rest = schema.value("additionalProperties", Json(true));
        if (!properties.contains(name) && rest == false) return place + " has an unknown member " + name;
        const Json& by = properties.contains(name) ? properties[name] : rest;
        if (!by.is_object()) continue;
        const std::string found = wrong(api, by, member, place + "/" + name);
        if (!found.empty()) return found;
    }
    return "";
}

std::string wrong(const Json& api, const Json& schema, const Json& value, const std::string& place) {
    if (schema.contains("$ref")) {
        const auto pointer = Json::json_pointer(schema["$ref"].get<std::string>().substr(1));
        return wrong(api, api.at(pointer), value, place);
    }
    if (schema.contains("oneOf")) {
        for (const Json& one : schema["oneOf"]) {
            if (wrong(api, one, value, place).empty()) return "";
        }
        return place + " is none of the allowed forms";
    }
    const Json types = schema["type"].is_array() ? schema["type"] : Json::array({schema["type"]});
    bool fits = false;
    for (const Json& type : types)
        fits = fits || hasType(value, type);
    if (!fits) return place + " is not of the type " + types.dump() + ": " + value.dump();
    if (schema.contains("enum") &&
        std::find(schema["enum"].begin(), schema["enum"].end(), value) == schema["enum"].end())
        return place + " has an unknown value " + value.dump();
    if (value.is_object()) return wrongMember(api, schema, value, place);
    if (value.is_array() && schema.contains("items")) {
        for (const Json& element : value) {
            const std::string found = wrong(api, schema["items"], element, place + "/-");
            if (!found.empty()) return found;
        }
    }
    return "";
}

web::Site site() {
    static web::History history;
    history.add(lookAt(9).live, {{1, {100, 200}}});
    return {web::Guard({"127.0.0.1", 8181}, {}, ""), web::PageFiles(),
            web::Site::Sources{[] { return history.toJson().dump(); },
                               [](const web::Picture&) { return std::string(); }, document().dump()}};
}

web::Reply ask(const web::Picture& picture, const std::string& target) {
    web::Request request;
    request.method = "GET";
    request.target = target;
    request.host = "127.0.0.1:8181";
    request.hosts = 1;
    return site().answer(request, picture);
}

}  // namespace

TEST(WebApi, AnswersAsItsDocumentSays) {
    web::Composer composer;
    web::Look look = lookAt(10);
    look.live.stations[1].associated = false;
    look.live.stations[1].refusal = "the passphrase does not match";
    look.log = {{1, 10, "join", "02:00:00:00:00:01 on access point 1"}};
    look.agent = hostd::protocol::ServiceStatus{"usp", true, {{"endpoint", "os::1"}}};
    const auto up = composer.take(look);
    const auto lost = composer.lose("no board is up");
    const Json api = document();
    unsigned answers = 0;
    for (const auto& [path, entry] : api["paths"].items()) {
        const Json& content = entry["get"]["responses"]["200"]["content"];
        if (!content.contains("application/json")) continue;
        for (const auto& picture : {web::Composer().picture(), up, lost}) {
            const web::Reply reply = ask(*picture, path);
            EXPECT_EQ(reply.status, 200U) << path;
            EXPECT_EQ(reply.type, "application/json") << path;
            EXPECT_EQ(wrong(api, content["application/json"]["schema"], Json::parse(reply.body), path), "");
            ++answers;
        }
    }
    EXPECT_EQ(answers, 27U);
}

TEST(WebApi, DocumentIsServed) {
    EXPECT_EQ(Json::parse(ask(*web::Composer().picture(), "/api/openapi.json").body), document());
}

TEST(WebApi, SchemaNoticesAMissingMember) {
    const Json api = document();
    const Json schema = Json{{"$ref", "#/components/schemas/Event"}};
    const Json event{{"number", 1}, {"time", 1.5}, {"source", "board"}, {"kind", "join"}, {"text", ""}};
    EXPECT_EQ(wrong(api, schema, event, ""), "");
    for (const char* const name : {"number", "time", "source", "kind", "text"}) {
        Json less = event;
        less.erase(name);
        EXPECT_NE(wrong(api, schema, less, ""), "") << name;
    }
    Json more = event;
    more["secret"] = 1;
    EXPECT_NE(wrong(api, schema, more, ""), "");
}

TEST(WebApi, GivesEventsBehindANumber) {
    web::Composer composer;
    web::Look look = lookAt(10);
    for (std::uint64_t i = 1; i <= 5; ++i)
        look.log.push_back({i, 10, "move", std::to_string(i)});
    const auto picture = composer.take(look);
    const Json all = Json::parse(ask(*picture, "/api/events").body);
    const Json later = Json::parse(ask(*picture, "/api/events?since=" + std::to_string(picture->lastEvent - 2)).body);
    EXPECT_EQ(all.size(), 6U);
    ASSERT_EQ(later.size(), 2U);
    EXPECT_EQ(later[1], all[5]);
    for (const char* const query :
         {"?since=", "?since=-1", "?since=x", "?since=1&a=b", "?a=b", "?since=99999999999999999999"})
        EXPECT_EQ(ask(*picture, std::string("/api/events") + query).status, 400U) << query;
}

}  // namespace quorvel::web_test
