#pragma once

#include <string>
#include <vector>

#include "ztservice/Service.h"
#include "ztservice/call/Request.h"

namespace ztservice::call {

// What is wrong with values, up to as many findings as somebody reads.
class Findings {
 public:
  void add(std::string path, std::string text) {
    constexpr size_t most = 20;
    if (list_.size() < most) list_.push_back({std::move(path), std::move(text)});
  }
  // What could not even be sent.
  void addFatal(std::string path, std::string text) {
    add(std::move(path), std::move(text));
    isFatal_ = true;
  }
  bool isFatal() const noexcept { return isFatal_; }
  const std::vector<Finding>& list() const noexcept { return list_; }

 private:
  std::vector<Finding> list_;
  bool isFatal_ = false;
};

// One element of a content as it is to be written.
struct Placed {
  // Null for what a wildcard lets in.
  const Member* member = nullptr;
  // What stands in the member's place, or in that of a wildcard.
  const Element* element = nullptr;
  // Null for what is filled in: the default or fixed value.
  const Value* value = nullptr;
  // What leads to it: "items[3]".
  std::string step;
};

// Where the values of an object stand in the content of a type: in its order, one alternative of each
// choice, as often as is allowed.
//
// Of a group that repeats, all members come round by round. Whether a choice inside it could be met
// otherwise is not judged: what repeats with it may be of any alternative.
class Content {
 public:
  // The type, the object and the service outlive it.
  Content(const Service& service, const Type& type, const Value& object, const std::string& path,
          Findings& findings);

  const std::vector<Placed>& placed() const noexcept { return placed_; }

  // Whether a key means a name: "local" or "{space}local".
  static bool means(std::string_view key, const Name& name);
  // Choices and alternatives, from the outermost on: of "2.1/3.2" (2, 1) and (3, 2).
  static std::vector<std::pair<unsigned, unsigned>> stepsOf(std::string_view path);

 private:
  // A member, and what it gets.
  struct Slot {
    const Member* member = nullptr;
    // Choice and alternative, from the outermost on.
    std::vector<std::pair<unsigned, unsigned>> path;
    uint64_t least = 0;
    bool isLeftOut = false;
    // The member that is there instead.
    std::string instead;
    std::vector<Placed> placed;
  };
  struct Candidate {
    size_t slot;
    const Element* standIn;
  };
  // A member of the object.
  struct Given {
    std::string_view key;
    const Value* value = nullptr;
    size_t count = 0;
    std::vector<Candidate> candidates;
    const Value& at(size_t i) const { return isOne ? *value : value->list()[i]; }
    bool isOne = false;
  };
  struct Range {
    size_t from;
    size_t to;
  };

  void readType();
  void readObject();
  bool takesListAsOne(const Given& given) const;
  std::vector<Candidate> candidatesOf(std::string_view key) const;
  void settleChoices();
  std::vector<bool> emptiableChoices(unsigned last) const;
  void settleChoice(unsigned choice, bool mayBeEmpty);
  bool isGiven(size_t slot) const;
  void distribute(const Given& given);
  void complainOfNone(const Given& given);
  void keepAll(const Given& given, const Member* member);
  void fillIn();
  void letIn(const Given& given, size_t wildcard);
  void write(size_t from, size_t to, unsigned group, std::vector<Range>& shares, size_t depth);
  size_t endOfGroup(size_t from, size_t to) const;
  static std::string stepOf(const Given& given, size_t i);
  static size_t rounds(const std::vector<Slot>& slots, size_t from, size_t to, unsigned group,
                       const std::vector<Range>& shares);
  std::string join(std::string_view step) const;

  const Service& service_;
  const Type& type_;
  const Value& object_;
  const std::string& path_;
  Findings& findings_;
  std::vector<Slot> slots_;
  std::vector<Given> given_;
  std::vector<Placed> placed_;
  // What has no place, for those who send it all the same.
  std::vector<Placed> rest_;
};

}  // namespace ztservice::call
