#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "ztservice/Name.h"
#include "ztservice/wsdl/Operation.h"

namespace ztservice {

enum class Protocol { soap11, soap12, http, other };

/// Where a service can be called, and its operations in the order of the binding.
///
/// - Ownership: belongs to its service.
class Port {
 public:
  std::string_view name() const noexcept { return name_; }
  std::string_view address() const noexcept { return address_; }
  Protocol protocol() const noexcept { return bound_->protocol; }
  std::string_view transport() const noexcept { return bound_->transport; }
  /// Of HTTP: "GET", "POST".
  std::string_view verb() const noexcept { return bound_->verb; }
  /// Both empty where they cannot be found.
  const Name& binding() const noexcept { return bound_->name; }
  const Name& portType() const noexcept { return bound_->portType; }
  const std::vector<Operation>& operations() const noexcept { return bound_->operations; }
  std::string_view error() const noexcept { return bound_->error; }

 private:
  friend class BindingReader;
  friend class ServiceReader;

  // What all ports of a binding have.
  struct Bound {
    Name name;
    Protocol protocol = Protocol::other;
    std::string_view transport;
    std::string_view verb;
    Name portType;
    std::vector<Operation> operations;
    std::string_view error;
  };

  std::string_view name_;
  std::string_view address_;
  std::shared_ptr<const Bound> bound_;
};

/// A service element of a document: ports that belong together.
class PortGroup {
 public:
  Name name() const noexcept { return name_; }
  const std::vector<Port>& ports() const noexcept { return ports_; }

 private:
  friend class ServiceReader;

  Name name_;
  std::vector<Port> ports_;
};

}  // namespace ztservice
