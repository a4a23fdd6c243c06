#include <algorithm>

#include "agent/message/Add.h"
#include "agent/model/OwnRules.h"

namespace quorvel::agent {
namespace {

struct Deletion {
    std::string path;
    Problem problem;
    std::vector<std::string> rows;
    std::vector<PathProblem> kept;  ///< rows that cannot be deleted
};

Task<Deletion> prepare(Context& context, std::string path) {
    Deletion deletion{path, {}, {}, {}};
    const Resolution resolved = co_await context.resolver.resolve(std::move(path), Resolver::Numbers::kLookUp);
    // A row that is not there has been deleted already.
    if (resolved.problem.code == kNoSuchObject) co_return deletion;
    deletion.problem = resolved.problem;
    if (deletion.problem) co_return deletion;
    if (resolved.kind != Path::Kind::kObject || (resolved.shape != nullptr && !resolved.shape->isTable())) {
        deletion.problem = {kDeleteFailed, deletion.path + " is not a row of a table"};
        co_return deletion;
    }
    for (const Place& place : resolved.places) {
        if (place.table) {
            deletion.problem = {kDeleteFailed, deletion.path + " is a table; name its rows, or all of them by *"};
        } else if (!place.object->addDelete) {
            deletion.kept.push_back(
                {place.path, {kDeleteFailed, "rows of " + place.object->path + " cannot be deleted"}});
        } else {
            deletion.rows.push_back(place.path);
        }
    }
    if (deletion.rows.empty() && !deletion.kept.empty()) deletion.problem = deletion.kept.front().problem;
    co_return deletion;
}

void report(const Deletion& deletion, usp::DeleteResp& answer) {
    auto& result = *answer.add_deleted_obj_results();
    result.set_requested_path(deletion.path);
    if (deletion.problem) {
        auto& failure = *result.mutable_oper_status()->mutable_oper_failure();
        failure.set_err_code(deletion.problem.code);
        failure.set_err_msg(deletion.problem.text);
        return;
    }
    auto& success = *result.mutable_oper_status()->mutable_oper_success();
    for (const std::string& row : deletion.rows)
        success.add_affected_paths(row);
    for (const PathProblem& kept : deletion.kept) {
        auto& error = *success.add_unaffected_path_errs();
        error.set_unaffected_path(kept.path);
        error.set_err_code(kept.problem.code);
        error.set_err_msg(kept.problem.text);
    }
}

}  // namespace

Task<void> answerDelete(Context& context, const usp::Delete& request, usp::DeleteResp& answer) {
    std::vector<Deletion> deletions;
    for (const std::string& path : request.obj_paths()) {
        Deletion deletion = co_await prepare(context, path);
        deletions.push_back(std::move(deletion));
    }
    std::vector<PathProblem> failed;
    for (const Deletion& deletion : deletions) {
        if (deletion.problem) failed.push_back({deletion.path, deletion.problem});
    }
    if (!failed.empty() && !request.allow_partial()) {
        const Problem first = failed.front().problem;
        throw Refusal(first, std::move(failed));
    }
    for (const Deletion& deletion : deletions) {
        for (const std::string& row : deletion.rows)
            removeRow(context.store, row);
        report(deletion, answer);
    }
    std::vector<Change> changes = context.store.commit();
    context.changes.insert(context.changes.end(), std::make_move_iterator(changes.begin()),
                           std::make_move_iterator(changes.end()));
}

}  // namespace quorvel::agent
