#include "recorder/desk/CallTree.h"

#include <algorithm>
#include <map>

namespace quorvel::recorder {

namespace {

// The open calls of a thread while the records are read: calls of the host within callbacks nest.
struct ThreadState {
    std::vector<size_t> openCalls;
    size_t libraryThread = SIZE_MAX;
};

std::optional<uint64_t> turnOf(const Record& lock) {
    const auto after = lock.valuesOf(ValueRole::kAfter);
    if (after.empty()) return std::nullopt;
    return after.front()->number;
}

}  // namespace

std::vector<size_t> CallTree::order() const {
    std::vector<size_t> places(calls.size());
    std::vector<size_t> locked;
    for (size_t i = 0; i < calls.size(); ++i) {
        places[i] = i;
        if (calls[i].turn) locked.push_back(i);
    }
    std::vector<size_t> byTurn = locked;
    std::ranges::stable_sort(byTurn, {}, [&](size_t i) { return *calls[i].turn; });
    for (size_t i = 0; i < locked.size(); ++i)
        places[locked[i]] = byTurn[i];
    return places;
}

CallTree makeCallTree(const Recording& recording) {
    CallTree tree;
    std::map<uint32_t, ThreadState> threads;
    for (const Record& record : recording.records) {
        ThreadState& thread = threads[record.thread];
        switch (record.kind) {
            case RecordKind::kCall:
                thread.openCalls.push_back(tree.calls.size());
                tree.calls.push_back({&record, nullptr, {}, {}});
                break;
            case RecordKind::kReturn:
                if (thread.openCalls.empty()) break;  // its call is in a gap
                if (tree.calls[thread.openCalls.back()].begin->function != record.function) break;
                tree.calls[thread.openCalls.back()].end = &record;
                thread.openCalls.pop_back();
                break;
            case RecordKind::kThread:
                thread.libraryThread = tree.threads.size();
                tree.threads.push_back({&record, {}});
                break;
            case RecordKind::kPlatform:
            case RecordKind::kLog:
            case RecordKind::kCallback:
                if (!thread.openCalls.empty()) {
                    Call& call = tree.calls[thread.openCalls.back()];
                    // Until its first lock a call does nothing that another could notice.
                    if (record.function == "QuorvelOsMutexLock" && !call.turn) call.turn = turnOf(record);
                    call.events.push_back(&record);
                } else if (thread.libraryThread != SIZE_MAX) {
                    tree.threads[thread.libraryThread].events.push_back(&record);
                }
                break;
            case RecordKind::kGap:
                tree.gaps.push_back(&record);
                break;
            case RecordKind::kStart:
            case RecordKind::kName:
            case RecordKind::kEnd:
                break;
        }
    }
    return tree;
}

}  // namespace quorvel::recorder
