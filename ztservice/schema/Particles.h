#pragma once

#include <string>
#include <vector>

#include "ztservice/schema/Resolver.h"

namespace ztservice::schema {

// The members that the groups below a node have, in document order, with bounds, choices and repetition of
// all groups around them.
class Particles {
 public:
  Particles(Resolver& resolver, TypeEntry& type) : resolver_(resolver), type_(type) {}

  // Errors: Unresolved for a group that is missing or contains itself.
  void read(const parse::Node& parent, std::vector<Member>& out);

 private:
  struct Bounds {
    uint64_t min;
    uint64_t max;
  };
  // A group that is open.
  struct Frame {
    const parse::Node* next;
    Context at;
    Bounds bounds{1, 1};
    // 0 unless it is a choice between several.
    unsigned choice = 0;
    unsigned alternative = 0;
    // Of the alternative around it.
    std::string_view path;
    // The innermost group that repeats.
    unsigned group = 0;
    // The group declaration whose body it is.
    const Declaration* body = nullptr;
  };

  void readNext(std::vector<Member>& out);
  void open(const parse::Node& node, const Frame& around, const Bounds& own, std::string_view path);
  void openReference(const parse::Node& node, const Frame& around, Frame& inside);
  std::string_view pathOf(Frame& frame);
  static Bounds boundsOf(const parse::Node& node);
  static Bounds product(const Bounds& a, const Bounds& b);
  Member element(const parse::Node& node, const Context& at);
  void refer(Member& member, const parse::Node& node, const Context& at);

  Resolver& resolver_;
  TypeEntry& type_;
  std::vector<Frame> frames_;
  std::unordered_set<const Declaration*> bodies_;
};

}  // namespace ztservice::schema
