#pragma once

#include <coroutine>
#include <exception>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <utility>

namespace quorvel::agent {

/// A piece of work that may wait for the gateway without holding up the thread. Starts when it is awaited, or when a
/// TaskGroup takes it. An exception passes to the awaiter.
template <typename T>
class [[nodiscard]] Task;

namespace detail {

struct PromiseBase {
    std::coroutine_handle<> continuation;
    std::exception_ptr error;

    struct FinalAwaiter {
        [[nodiscard]] bool await_ready() const noexcept {
            return false;
        }
        template <typename Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> ended) noexcept {
            const auto next = ended.promise().continuation;
            return next ? next : std::noop_coroutine();
        }
        void await_resume() const noexcept {}
    };

    [[nodiscard]] std::suspend_always initial_suspend() const noexcept {
        return {};
    }
    [[nodiscard]] FinalAwaiter final_suspend() const noexcept {
        return {};
    }
    void unhandled_exception() {
        error = std::current_exception();
    }
};

template <typename T>
struct Promise : PromiseBase {
    std::optional<T> value;
    Task<T> get_return_object();
    void return_value(T result) {
        value.emplace(std::move(result));
    }
    T take() {
        if (error) std::rethrow_exception(error);
        return std::move(*value);
    }
};

template <>
struct Promise<void> : PromiseBase {
    Task<void> get_return_object();
    void return_void() const noexcept {}
    void take() const {
        if (error) std::rethrow_exception(error);
    }
};

}  // namespace detail

template <typename T>
class [[nodiscard]] Task {
  public:
    using promise_type = detail::Promise<T>;
    using Handle = std::coroutine_handle<promise_type>;

    explicit Task(Handle handle) : handle_(handle) {}
    Task(Task&& other) noexcept : handle_(std::exchange(other.handle_, {})) {}
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    Task& operator=(Task&&) = delete;
    ~Task() {
        if (handle_) handle_.destroy();
    }

    // A task that ends at once returns here, so that a loop over many of them needs no stack.
    [[nodiscard]] bool await_ready() {
        handle_.resume();
        return handle_.done();
    }
    void await_suspend(std::coroutine_handle<> awaiter) noexcept {
        handle_.promise().continuation = awaiter;
    }
    T await_resume() {
        return handle_.promise().take();
    }

    /// Starts the task without an awaiter; it must outlive its work.
    void start() {
        handle_.resume();
    }
    [[nodiscard]] bool done() const {
        return handle_.done();
    }
    /// Returns the result of a task that is done.
    T result() {
        return handle_.promise().take();
    }

  private:
    Handle handle_;
};

namespace detail {

template <typename T>
Task<T> Promise<T>::get_return_object() {
    return Task<T>(std::coroutine_handle<Promise<T>>::from_promise(*this));
}

inline Task<void> Promise<void>::get_return_object() {
    return Task<void>(std::coroutine_handle<Promise<void>>::from_promise(*this));
}

}  // namespace detail

/// Waits for one call back: `co_await Callback<T>([&](auto done) { gateway.get(..., done); })`. A call back that comes
/// after the waiting task has been destroyed is passed over; one that comes at once does not suspend.
template <typename T>
class [[nodiscard]] Callback {
  public:
    using Done = std::function<void(T)>;

    explicit Callback(const std::function<void(Done)>& ask) : state_(std::make_shared<State>()) {
        ask([state = state_](T value) {
            if (state->value.has_value()) return;
            state->value.emplace(std::move(value));
            if (const auto waiter = std::exchange(state->waiter, {})) waiter.resume();
        });
    }
    Callback(const Callback&) = delete;
    Callback& operator=(const Callback&) = delete;
    ~Callback() {
        state_->waiter = {};
    }

    [[nodiscard]] bool await_ready() const noexcept {
        return state_->value.has_value();
    }
    void await_suspend(std::coroutine_handle<> waiter) noexcept {
        state_->waiter = waiter;
    }
    T await_resume() {
        return std::move(*state_->value);
    }

  private:
    struct State {
        std::optional<T> value;
        std::coroutine_handle<> waiter;
    };
    std::shared_ptr<State> state_;
};

/// Runs tasks that nobody awaits, and destroys those that are unfinished with itself.
class TaskGroup {
  public:
    /// Starts a task. It must catch its own exceptions.
    void run(Task<void> task) {
        sweep();
        tasks_.push_back(std::move(task));
        tasks_.back().start();
    }
    /// Destroys the tasks that have ended. Never called from within a task.
    void sweep() {
        std::erase_if(tasks_, [](const Task<void>& task) { return task.done(); });
    }
    [[nodiscard]] std::size_t size() const {
        return tasks_.size();
    }

  private:
    std::list<Task<void>> tasks_;
};

/// Lets one task after the other pass: `const auto turn = co_await queue.turn();`.
class Queue {
  public:
    class [[nodiscard]] Turn {
      public:
        explicit Turn(Queue* queue) : queue_(queue) {}
        Turn(Turn&& other) noexcept : queue_(std::exchange(other.queue_, nullptr)) {}
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        Turn& operator=(Turn&&) = delete;
        ~Turn() {
            if (queue_ != nullptr) queue_->next();
        }

      private:
        Queue* queue_;
    };

    class [[nodiscard]] Awaiter {
      public:
        explicit Awaiter(Queue& queue) : queue_(queue) {}
        Awaiter(const Awaiter&) = delete;
        Awaiter& operator=(const Awaiter&) = delete;
        ~Awaiter() {
            if (waiting_) queue_.waiters_.remove(handle_);
        }
        [[nodiscard]] bool await_ready() {
            return !std::exchange(queue_.taken_, true);
        }
        void await_suspend(std::coroutine_handle<> waiter) {
            handle_ = waiter;
            waiting_ = true;
            queue_.waiters_.push_back(waiter);
        }
        Turn await_resume() {
            waiting_ = false;
            return Turn(&queue_);
        }

      private:
        Queue& queue_;
        std::coroutine_handle<> handle_;
        bool waiting_ = false;
    };

    [[nodiscard]] Awaiter turn() {
        return Awaiter(*this);
    }
    /// Lets nobody pass any more: the tasks that wait are about to be destroyed.
    void close() {
        closed_ = true;
    }

  private:
    void next() {
        taken_ = false;
        // A waiter that ends at once comes here again: the loop takes the next one, not a deeper call.
        if (std::exchange(passing_, true)) return;
        while (!taken_ && !closed_ && !waiters_.empty()) {
            const auto waiter = waiters_.front();
            waiters_.pop_front();
            taken_ = true;
            waiter.resume();
        }
        passing_ = false;
    }

    std::list<std::coroutine_handle<>> waiters_;
    bool taken_ = false;
    bool passing_ = false;
    bool closed_ = false;
};

}  // namespace quorvel::agent
