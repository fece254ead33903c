#include "ztservice/call/Value.h"

#include <algorithm>

namespace ztservice::call {

Value Value::number(std::string text) {
  Value value;
  value.content_ = Number{std::move(text)};
  return value;
}

Value::Kind Value::kind() const noexcept { return static_cast<Kind>(content_.index()); }

const std::string& Value::text() const {
  if (const auto* number = std::get_if<Number>(&content_)) return number->text;
  return std::get<std::string>(content_);
}

size_t Value::size() const noexcept {
  if (const auto* list = std::get_if<List>(&content_)) return list->size();
  const auto* object = std::get_if<Object>(&content_);
  return object ? object->size() : 0;
}

Value& Value::first() noexcept {
  if (auto* list = std::get_if<List>(&content_)) return list->front();
  return std::get_if<Object>(&content_)->front().second;
}

Value Value::takeLast() noexcept {
  if (auto* list = std::get_if<List>(&content_)) {
    Value last = std::move(list->back());
    list->pop_back();
    return last;
  }
  auto* object = std::get_if<Object>(&content_);
  Value last = std::move(object->back().second);
  object->pop_back();
  return last;
}

bool Value::isShallow() const noexcept {
  if (const auto* list = std::get_if<List>(&content_))
    return std::all_of(list->begin(), list->end(), [](const Value& one) { return one.size() == 0; });
  const auto* object = std::get_if<Object>(&content_);
  return !object || std::all_of(object->begin(), object->end(),
                                [](const Member& one) { return one.second.size() == 0; });
}

// However deep it is, without recursion or memory: what is left of a value waits in the first place of the
// one inside it. Most are not deep.
Value::~Value() {
  if (isShallow()) return;
  Value current = std::move(*this);
  size_t depth = 0;
  while (current.size() > 0) {
    Value inner = current.takeLast();
    if (depth == 0 && inner.isShallow()) continue;
    if (depth > 0 && current.size() == 0) {
      current = std::move(inner);
      --depth;
      continue;
    }
    for (; inner.size() > 0; ++depth) {
      Value innermost = std::exchange(inner.first(), std::move(current));
      current = std::exchange(inner, std::move(innermost));
    }
  }
}

Value::Value(const Value& other) {
  struct Step {
    const Value* from;
    Value* to;
  };
  std::vector<Step> open{{&other, this}};
  while (!open.empty()) {
    const auto [from, to] = open.back();
    open.pop_back();
    if (const auto* list = std::get_if<List>(&from->content_)) {
      List& copies = to->content_.emplace<List>(list->size());
      for (size_t i = 0; i < copies.size(); ++i) open.push_back({&(*list)[i], &copies[i]});
    } else if (const auto* object = std::get_if<Object>(&from->content_)) {
      Object& copies = to->content_.emplace<Object>(object->size());
      for (size_t i = 0; i < copies.size(); ++i) {
        copies[i].first = (*object)[i].first;
        open.push_back({&(*object)[i].second, &copies[i].second});
      }
    } else if (const auto* number = std::get_if<Number>(&from->content_)) {
      to->content_ = *number;
    } else if (const auto* text = std::get_if<std::string>(&from->content_)) {
      to->content_ = *text;
    } else if (const auto* flag = std::get_if<bool>(&from->content_)) {
      to->content_ = *flag;
    }
  }
}

Value& Value::operator=(const Value& other) {
  if (this != &other) *this = Value(other);
  return *this;
}

Value& Value::operator=(Value&& other) noexcept {
  // The other may lie inside of this one.
  Value old;
  old.content_.swap(content_);
  content_.swap(other.content_);
  return *this;
}

const Value* Value::find(std::string_view name) const noexcept {
  const auto* object = std::get_if<Object>(&content_);
  if (!object) return nullptr;
  for (const Member& one : *object) {
    if (one.first == name) return &one.second;
  }
  return nullptr;
}

Value* Value::find(std::string_view name) noexcept {
  return const_cast<Value*>(static_cast<const Value*>(this)->find(name));
}

Value& Value::operator[](std::string_view name) {
  if (isNull()) content_.emplace<Object>();
  if (Value* known = find(name)) return *known;
  return object().emplace_back(std::string(name), Value()).second;
}

void Value::add(std::string_view name, Value value) {
  Value* known = find(name);
  if (!known) {
    if (isNull()) content_.emplace<Object>();
    object().emplace_back(std::string(name), std::move(value));
    return;
  }
  if (known->kind() != Kind::list) {
    List list;
    list.push_back(std::move(*known));
    *known = Value(std::move(list));
  }
  known->list().push_back(std::move(value));
}

bool operator==(const Value& left, const Value& right) {
  std::vector<std::pair<const Value*, const Value*>> open{{&left, &right}};
  while (!open.empty()) {
    const auto [one, other] = open.back();
    open.pop_back();
    if (one->kind() != other->kind()) return false;
    switch (one->kind()) {
      case Value::Kind::null:
        break;
      case Value::Kind::boolean:
        if (one->boolean() != other->boolean()) return false;
        break;
      case Value::Kind::number:
      case Value::Kind::text:
        if (one->text() != other->text()) return false;
        break;
      case Value::Kind::list:
        if (one->list().size() != other->list().size()) return false;
        for (size_t i = 0; i < one->list().size(); ++i) open.push_back({&one->list()[i], &other->list()[i]});
        break;
      case Value::Kind::object:
        if (one->object().size() != other->object().size()) return false;
        for (size_t i = 0; i < one->object().size(); ++i) {
          const auto& member = one->object()[i];
          if (member.first != other->object()[i].first) return false;
          open.push_back({&member.second, &other->object()[i].second});
        }
        break;
    }
  }
  return true;
}

}  // namespace ztservice::call
