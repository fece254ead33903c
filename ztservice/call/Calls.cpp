#include "ztservice/call/Calls.h"

#include <algorithm>
#include <list>
#include <new>
#include <optional>
#include <unordered_map>
#include <vector>

#include "ztservice/call/ConnectionPool.h"
#include "ztservice/call/Sending.h"

namespace ztservice::call {

class Calls::Transfers {
 public:
  Transfers(Client::Pool& pool, size_t most) : pool_(pool), most_(std::max<size_t>(most, 1)) {
    // curl itself is started with the first connection.
    pool_.giveBack(pool_.take());
    multi_.reset(curl_multi_init());
    if (!multi_) throw std::bad_alloc();
  }

  ~Transfers() {
    for (Transfer& one : open_) curl_multi_remove_handle(multi_.get(), one.connection->handle());
  }

  size_t size() const noexcept { return open_.size(); }
  size_t most() const noexcept { return most_; }

  void add(Request request, Done done) {
    if (pool_.options().prepare) pool_.options().prepare(request);
    Transfer& added = open_.emplace_back();
    const auto place = std::prev(open_.end());
    try {
      added.request = std::move(request);
      added.done = std::move(done);
      added.connection = pool_.take();
      added.sending.emplace(*added.connection, pool_.options(), added.request);
      byHandle_[added.connection->handle()] = place;
      start(added);
    } catch (...) {
      tell(place, {{}, std::current_exception()});
    }
  }

  bool wait(std::chrono::milliseconds patience) {
    if (open_.empty()) return false;
    const auto end = Clock::now() + patience;
    const size_t before = told_;
    for (;;) {
      startWaiting();
      int running = 0;
      check(curl_multi_perform(multi_.get(), &running));
      takeDone();
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
      if (open_.empty() || told_ != before || left.count() <= 0) return !open_.empty();
      constexpr std::chrono::milliseconds pulse(100);  // for those that wait for their time
      check(curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(std::min(left, pulse).count()),
                            nullptr));
    }
  }

 private:
  using Clock = std::chrono::steady_clock;
  struct Transfer {
    Request request;
    Done done;
    std::unique_ptr<parse::Connection> connection;
    std::optional<Sending> sending;
    // When it goes once more; nothing while it is on its way.
    std::optional<Clock::time_point> start;
  };
  struct CleanUp {
    void operator()(CURLM* multi) const noexcept { curl_multi_cleanup(multi); }
  };

  static void check(CURLMcode code) {
    if (code != CURLM_OK) throw std::bad_alloc();
  }

  void start(Transfer& transfer) {
    transfer.start.reset();
    transfer.sending->start();
    check(curl_multi_add_handle(multi_.get(), transfer.connection->handle()));
  }

  void startWaiting() {
    const auto now = Clock::now();
    for (auto one = open_.begin(); one != open_.end();) {
      const auto place = one++;
      if (!place->start || *place->start > now) continue;
      try {
        start(*place);
      } catch (...) {
        tell(place, {{}, std::current_exception()});
      }
    }
  }

  void takeDone() {
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(multi_.get(), &left)) {
      if (message->msg != CURLMSG_DONE) continue;
      const auto place = byHandle_.at(message->easy_handle);
      const CURLcode code = message->data.result;
      curl_multi_remove_handle(multi_.get(), message->easy_handle);
      Outcome outcome;
      try {
        std::optional<HttpAnswer> answer = place->sending->finish(place->connection->end(code));
        if (!answer) {
          place->start = Clock::now() + place->sending->pause();
          continue;
        }
        outcome.answer = std::move(*answer);
      } catch (...) {
        outcome.error = std::current_exception();
      }
      tell(place, std::move(outcome));
    }
  }

  // Its room is free before it is told, and its connection, if that is good still.
  void tell(std::list<Transfer>::iterator place, Outcome outcome) {
    std::list<Transfer> told;
    told.splice(told.end(), open_, place);
    if (place->connection) byHandle_.erase(place->connection->handle());
    ++told_;
    place->sending.reset();
    if (!outcome.error) pool_.giveBack(std::move(place->connection));
    place->done(std::move(outcome));
  }

  Client::Pool& pool_;
  size_t most_;
  size_t told_ = 0;
  // Before the connections: they leave it first.
  std::unique_ptr<CURLM, CleanUp> multi_;
  std::list<Transfer> open_;
  std::unordered_map<CURL*, std::list<Transfer>::iterator> byHandle_;
};

Calls::Calls(Client& client, size_t most) : transfers_(std::make_unique<Transfers>(*client.pool_, most)) {}

Calls::~Calls() = default;

void Calls::add(Request request, Done done) {
  constexpr std::chrono::hours patience(1);
  while (transfers_->size() >= transfers_->most()) transfers_->wait(patience);
  transfers_->add(std::move(request), std::move(done));
}

bool Calls::wait(std::chrono::milliseconds patience) { return transfers_->wait(patience); }

void Calls::finish() {
  constexpr std::chrono::hours patience(1);
  while (transfers_->wait(patience)) {
  }
}

size_t Calls::open() const noexcept { return transfers_->size(); }

}  // namespace ztservice::call
