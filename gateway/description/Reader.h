#pragma once

#include <string>
#include <variant>

#include "gateway/description/Description.h"

namespace quorvel::description {

/// The first thing that is wrong with a description.
struct Error {
    std::string message;  ///< one line: "NAME:LINE:COLUMN: POINTER: expected ..., found ..."
    std::string pointer;  ///< JSON pointer of the value; empty for the whole description
    std::string text;     ///< the message without name, position and pointer
};

/// Reads and checks the description in the file `path`.
[[nodiscard]] std::variant<Board, Error> readBoardFile(const std::string& path);

/// Reads and checks a description. Messages call it `name`.
[[nodiscard]] std::variant<Board, Error> parseBoard(const std::string& text, const std::string& name);

/// Read and check one station or neighbour in the form that it has in a description. Messages call it `name`.
[[nodiscard]] std::variant<Station, Error> parseStation(const std::string& text, const std::string& name);
[[nodiscard]] std::variant<Neighbour, Error> parseNeighbour(const std::string& text, const std::string& name);

}  // namespace quorvel::description
