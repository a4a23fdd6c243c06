#include "tests/wifi/DataModel.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Contexts.h"

namespace quorvel::datamodel {

namespace {

template <Type type>
struct ValueOf;
template <>
struct ValueOf<Type::Boolean> {
    using Out = std::uint8_t;
    using In = std::uint32_t;
};
template <>
struct ValueOf<Type::UnsignedInt> {
    using Out = std::uint32_t;
    using In = std::uint32_t;
};
template <>
struct ValueOf<Type::Int> {
    using Out = std::int32_t;
    using In = std::int32_t;
};

// Signatures by type and depth.
template <Type type, int depth>
struct Signature;
template <Type type>
struct Signature<type, 0> {
    using Get = std::uint32_t (*)(typename ValueOf<type>::Out*);
    using Set = std::uint32_t (*)(void*, typename ValueOf<type>::In);
};
template <Type type>
struct Signature<type, 1> {
    using Get = std::uint32_t (*)(std::uint32_t, typename ValueOf<type>::Out*);
    using Set = std::uint32_t (*)(void*, std::uint32_t, typename ValueOf<type>::In);
};
template <Type type>
struct Signature<type, 2> {
    using Get = std::uint32_t (*)(std::uint32_t, std::uint32_t, typename ValueOf<type>::Out*);
    using Set = std::uint32_t (*)(void*, std::uint32_t, std::uint32_t, typename ValueOf<type>::In);
};
template <>
struct Signature<Type::String, 0> {
    using Get = std::uint32_t (*)(char*, std::uint32_t);
    using Set = std::uint32_t (*)(void*, const char*, std::uint32_t);
};
template <>
struct Signature<Type::String, 1> {
    using Get = std::uint32_t (*)(std::uint32_t, char*, std::uint32_t);
    using Set = std::uint32_t (*)(void*, std::uint32_t, const char*, std::uint32_t);
};
template <>
struct Signature<Type::String, 2> {
    using Get = std::uint32_t (*)(std::uint32_t, std::uint32_t, char*, std::uint32_t);
    using Set = std::uint32_t (*)(void*, std::uint32_t, std::uint32_t, const char*, std::uint32_t);
};

using Apply0 = std::uint32_t (*)(void*);
using Apply1 = std::uint32_t (*)(void*, std::uint32_t);
using Apply2 = std::uint32_t (*)(void*, std::uint32_t, std::uint32_t);
using StationGet = std::uint32_t (*)(std::uint32_t, const char*, std::int32_t*);
using Command = std::uint32_t (*)();

// Takes only a function of exactly this signature.
template <typename Exact>
Function erase(Exact function) {
    return reinterpret_cast<Function>(function);
}

Function eraseApply(Apply0 function) {
    return reinterpret_cast<Function>(function);
}
Function eraseApply(Apply1 function) {
    return reinterpret_cast<Function>(function);
}
Function eraseApply(Apply2 function) {
    return reinterpret_cast<Function>(function);
}

template <typename Exact>
Exact as(Function function) {
    return reinterpret_cast<Exact>(function);
}

[[noreturn]] void missing(const std::string& what) {
    (void)std::fprintf(stderr, "the test asks for what the data model does not have: %s\n", what.c_str());
    std::abort();
}

bool scansOnApply(const char* prefix) {
    return std::strcmp(prefix, "WiFiRadioStats") == 0;
}

template <Type type>
std::uint32_t getValue(const Parameter& parameter, std::uint32_t i, std::uint32_t j, void* out) {
    auto* value = static_cast<typename ValueOf<type>::Out*>(out);
    switch (parameter.depth) {
        case 0:
            return as<typename Signature<type, 0>::Get>(parameter.getter)(value);
        case 1:
            return as<typename Signature<type, 1>::Get>(parameter.getter)(i, value);
        default:
            return as<typename Signature<type, 2>::Get>(parameter.getter)(i, j, value);
    }
}

template <Type type>
std::uint32_t setValue(const Parameter& parameter, void* ctx, std::uint32_t value, std::uint32_t i, std::uint32_t j) {
    const auto in = static_cast<typename ValueOf<type>::In>(value);
    switch (parameter.depth) {
        case 0:
            return as<typename Signature<type, 0>::Set>(parameter.setter)(ctx, in);
        case 1:
            return as<typename Signature<type, 1>::Set>(parameter.setter)(ctx, i, in);
        default:
            return as<typename Signature<type, 2>::Set>(parameter.setter)(ctx, i, j, in);
    }
}

}  // namespace

const std::vector<Object>& objects() {
    static const std::vector<Object> all = {
#define OBJECT(prefix, path, depth, limit) \
    {#prefix,                              \
     path,                                 \
     depth,                                \
     sizeof(prefix##Context),              \
     limit,                                \
     &prefix##InitContext,                 \
     &prefix##CheckContextNodeSet,         \
     eraseApply(&prefix##ApplyContext),    \
     eraseApply(&prefix##InstanceGet)},
#include "tests/wifi/DataModelRows.inc"
    };
    return all;
}

const std::vector<Parameter>& parameters() {
#define GETTER_ReadOnly(stem, type, depth) erase<Signature<Type::type, depth>::Get>(&stem##Get)
#define GETTER_ReadWrite(stem, type, depth) GETTER_ReadOnly(stem, type, depth)
#define GETTER_AtOnce(stem, type, depth) GETTER_ReadOnly(stem, type, depth)
#define GETTER_Commit(stem, type, depth) GETTER_ReadOnly(stem, type, depth)
#define GETTER_WriteOnly(stem, type, depth) nullptr
#define GETTER_Station(stem, type, depth) erase<StationGet>(&stem##Get)
#define SETTER_ReadOnly(stem, type, depth) nullptr
#define SETTER_Station(stem, type, depth) nullptr
#define SETTER_ReadWrite(stem, type, depth) erase<Signature<Type::type, depth>::Set>(&stem##Set)
#define SETTER_WriteOnly(stem, type, depth) SETTER_ReadWrite(stem, type, depth)
#define SETTER_AtOnce(stem, type, depth) SETTER_ReadWrite(stem, type, depth)
#define SETTER_Commit(stem, type, depth) erase<Command>(&stem##Set)
    static const std::vector<Parameter> all = {
#define PARAMETER(prefix, depth, node, name, stem, type, access, capacity, low, high) \
    {#prefix,                                                                         \
     depth,                                                                           \
     node,                                                                            \
     #name,                                                                           \
     #stem,                                                                           \
     Type::type,                                                                      \
     Access::access,                                                                  \
     capacity,                                                                        \
     low,                                                                             \
     high,                                                                            \
     GETTER_##access(stem, type, depth),                                              \
     SETTER_##access(stem, type, depth)},
#include "tests/wifi/DataModelRows.inc"
    };
    return all;
}

const Parameter& parameter(const std::string& stem) {
    for (const Parameter& candidate : parameters()) {
        if (candidate.stem == stem) {
            return candidate;
        }
    }
    missing(stem);
}

std::vector<Parameter> parametersOf(const std::string& prefix) {
    std::vector<Parameter> own;
    for (const Parameter& candidate : parameters()) {
        if (candidate.prefix == prefix) {
            own.push_back(candidate);
        }
    }
    std::sort(own.begin(), own.end(), [](const Parameter& a, const Parameter& b) { return a.node < b.node; });
    return own;
}

const Object& Parameter::object() const {
    for (const Object& candidate : objects()) {
        if (std::strcmp(candidate.prefix, prefix) == 0) {
            return candidate;
        }
    }
    missing(prefix);
}

std::uint32_t Parameter::width() const {
    switch (type) {
        case Type::Boolean:
            return 1;
        case Type::String:
            return capacity;
        case Type::UnsignedInt:
        case Type::Int:
            break;
    }
    return 4;
}

std::size_t Parameter::offset() const {
    std::size_t at = 132;
    for (const Parameter& field : parametersOf(prefix)) {
        const bool number = field.type == Type::UnsignedInt || field.type == Type::Int;
        if (number) {
            at = (at + 3) / 4 * 4;
        }
        if (field.node == node) {
            break;
        }
        at += field.width();
    }
    return at;
}

std::uint32_t Parameter::get(std::uint32_t i, std::uint32_t j, void* out, std::uint32_t len) const {
    if (access == Access::Station) {
        return as<StationGet>(getter)(i, "00:11:22:33:44:55", static_cast<std::int32_t*>(out));
    }
    switch (type) {
        case Type::Boolean:
            return getValue<Type::Boolean>(*this, i, j, out);
        case Type::UnsignedInt:
            return getValue<Type::UnsignedInt>(*this, i, j, out);
        case Type::Int:
            return getValue<Type::Int>(*this, i, j, out);
        case Type::String:
            break;
    }
    char* text = static_cast<char*>(out);
    switch (depth) {
        case 0:
            return as<Signature<Type::String, 0>::Get>(getter)(text, len);
        case 1:
            return as<Signature<Type::String, 1>::Get>(getter)(i, text, len);
        default:
            return as<Signature<Type::String, 2>::Get>(getter)(i, j, text, len);
    }
}

std::uint32_t Parameter::setNumber(void* ctx, std::uint32_t value, std::uint32_t i, std::uint32_t j) const {
    switch (type) {
        case Type::Boolean:
            return setValue<Type::Boolean>(*this, ctx, value, i, j);
        case Type::UnsignedInt:
            return setValue<Type::UnsignedInt>(*this, ctx, value, i, j);
        case Type::Int:
            return setValue<Type::Int>(*this, ctx, value, i, j);
        case Type::String:
            break;
    }
    missing("a number's setter: " + setterName());
}

std::uint32_t Parameter::setText(void* ctx, const char* text, std::uint32_t len, std::uint32_t i,
                                 std::uint32_t j) const {
    switch (depth) {
        case 0:
            return as<Signature<Type::String, 0>::Set>(setter)(ctx, text, len);
        case 1:
            return as<Signature<Type::String, 1>::Set>(setter)(ctx, i, text, len);
        default:
            return as<Signature<Type::String, 2>::Set>(setter)(ctx, i, j, text, len);
    }
}

std::uint32_t Object::apply(void* ctx) const {
    if (scansOnApply(prefix)) {
        return as<Apply2>(applyContext)(ctx, 1, 0);
    }
    switch (depth) {
        case 0:
            return as<Apply0>(applyContext)(ctx);
        case 1:
            return as<Apply1>(applyContext)(ctx, 1);
        default:
            return as<Apply2>(applyContext)(ctx, 1, 1);
    }
}

std::uint32_t Object::snapshot(void* ctx) const {
    switch (depth) {
        case 0:
            return as<Apply0>(instanceGet)(ctx);
        case 1:
            return as<Apply1>(instanceGet)(ctx, 1);
        default:
            return as<Apply2>(instanceGet)(ctx, 1, 1);
    }
}

}  // namespace quorvel::datamodel
