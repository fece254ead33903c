#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ztservice/Error.h"
#include "ztservice/Export.h"
#include "ztservice/Name.h"
#include "ztservice/load/Options.h"
#include "ztservice/schema/Type.h"
#include "ztservice/wsdl/Flatten.h"
#include "ztservice/wsdl/Port.h"

namespace ztservice {

/// A whole SOAP service: what its WSDL 1.1 document and all that it refers to say, down to the facets.
///
///     const auto service = ztservice::load("OrderService.wsdl");
///     for (const auto& port : service.ports())
///       for (const auto& operation : port.operations()) std::cout << operation.name() << '\n';
///     const auto* type = service.type({"urn:orders", "Order"});
///     for (const auto& trouble : service.warnings()) std::cerr << trouble << '\n';
///
/// Whoever fills in a request starts at a part of a message: at its element or its type, and goes on from
/// there by name.
///
/// - Shape: what cannot be resolved costs only what needs it, which has an `error` instead.
/// - Ownership: owns all that it gives out, names and texts too. A copy shares it.
/// - Threads: never changes, so that several threads may read it at once.
class ZTSERVICE_API Service {
 public:
  std::string_view targetNamespace() const noexcept;
  /// The services of all documents, in their order, and the ports of all of them.
  const std::vector<PortGroup>& services() const noexcept;
  const std::vector<Port>& ports() const noexcept;

  /// What the messages need, by namespace and name.
  std::span<const Element* const> elements() const noexcept;
  std::span<const Type* const> types() const noexcept;
  /// Any type or global element of the documents, needed or not; null if there is none.
  const Type* type(const Name& name) const;
  const Element* element(const Name& name) const;

  const std::vector<Warning>& warnings() const noexcept;

  /// The same service with the operations of that name only, and what they need.
  Service narrowedTo(std::string_view operation) const;

  struct Content;
  explicit Service(std::shared_ptr<const Content> content) noexcept;

 private:
  std::shared_ptr<const Content> content_;
};

/// Reads a service.
/// \param location a file, or an address of HTTP or HTTPS; UTF-8.
/// Errors: Error where the document cannot be read or is no WSDL 1.1. What it refers to and cannot be read is
/// a warning.
ZTSERVICE_API Service load(const std::string& location, const Options& options = {});
/// The same of a document that is in memory.
/// \param location what its references are relative to, and what it is called in messages.
ZTSERVICE_API Service loadText(const std::string& bytes, const std::string& location,
                               const Options& options = {});

}  // namespace ztservice
