#pragma once

#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <string>
#include <utility>

namespace scripted {

/// Answers to calls, given one after another; the last one holds for all further calls.
template <typename Result>
class AnswerQueue {
public:
    template <typename Value>
    AnswerQueue& returns(Value value) {
        return add([value]() -> Result { return value; });
    }

    /// For functions without a result.
    AnswerQueue& succeeds() {
        return add([]() -> Result {});
    }

    template <typename Failure>
    AnswerQueue& throws(Failure failure) {
        return add([failure]() -> Result { throw failure; });
    }

    AnswerQueue& rethrows(std::exception_ptr failure) {
        return add([failure]() -> Result { std::rethrow_exception(failure); });
    }

    void clear() { answers_.clear(); }

    bool empty() const { return answers_.empty(); }

    Result next() {
        const std::function<Result()> answer = answers_.front();
        if (answers_.size() > 1) {
            answers_.pop_front();
        }
        return answer();
    }

private:
    AnswerQueue& add(std::function<Result()> answer) {
        answers_.push_back(std::move(answer));
        return *this;
    }

    std::deque<std::function<Result()>> answers_;
};

/// What one function of the platform answers, whatever its arguments or for one first argument alone.
template <typename Result>
class Answers : public AnswerQueue<Result> {
public:
    /// The answers for calls with this first argument.
    AnswerQueue<Result>& at(const std::u16string& firstArgument) { return byFirstArgument_[firstArgument]; }

    /// Back to no script at all.
    void forget() {
        this->clear();
        byFirstArgument_.clear();
    }

    /// The answer to a call; `usual()` where none was scripted.
    template <typename Usual>
    Result next(const std::u16string& firstArgument, Usual usual) {
        const auto special = byFirstArgument_.find(firstArgument);
        if (special != byFirstArgument_.end() && !special->second.empty()) {
            return special->second.next();
        }
        return this->empty() ? usual() : AnswerQueue<Result>::next();
    }

private:
    std::map<std::u16string, AnswerQueue<Result>> byFirstArgument_;
};

}  // namespace scripted
