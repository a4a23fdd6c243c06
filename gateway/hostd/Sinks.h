#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "gateway/hostd/Reply.h"
#include "gateway/hostd/Service.h"

namespace quorvel::hostd {

/// Where the values go that the service reads.
class Service::Sink {
  public:
    Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    virtual ~Sink() = default;

    virtual void value(std::string path, Value value) = 0;
    virtual void measured(std::string path, protocol::Json record) = 0;
    virtual void fault(Fault fault) = 0;
};

/// Sends values on in parts of many, in order with the faults.
class Service::PartSink : public Sink {
  public:
    /// `of` is the position of the path that the values belong to.
    PartSink(Reply& reply, std::uint32_t of) : reply_(reply), of_(of) {}

    void value(std::string path, Value value) override;
    void measured(std::string path, protocol::Json record) override;
    void fault(Fault fault) override;

    /// Sends what is left.
    void flush();

    /// Keeps a copy of each part, without its position, from now on.
    void keepParts(std::vector<protocol::Part>* kept) {
        kept_ = kept;
    }

  private:
    void send(protocol::Part part);

    Reply& reply_;
    std::uint32_t of_;
    std::vector<protocol::PathValue> values_;
    std::vector<protocol::Part>* kept_ = nullptr;
};

/// Compares values with those of the last look.
class Service::LookSink : public Sink {
  public:
    explicit LookSink(Watched& watched) : watched_(watched) {}

    void value(std::string path, Value value) override;
    void measured(std::string path, protocol::Json record) override;
    void fault(Fault fault) override;

    /// Returns what has changed since the last look. `complete` says that everything could be read.
    [[nodiscard]] protocol::Part finish(bool complete);

  private:
    Watched& watched_;
    std::set<std::string> seen_;
    protocol::Part part_;
};

}  // namespace quorvel::hostd
