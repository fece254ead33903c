#include "ztservice/Service.h"

#include <mutex>

#include "ztservice/Reach.h"
#include "ztservice/load/Loader.h"
#include "ztservice/schema/Declarations.h"
#include "ztservice/schema/Resolver.h"
#include "ztservice/wsdl/BindingReader.h"
#include "ztservice/wsdl/DefinitionSet.h"

namespace ztservice {

// Fills in the services of the documents.
class ServiceReader {
 public:
  static std::vector<PortGroup> read(const wsdl::DefinitionSet& definitions, BindingReader& bindings) {
    std::vector<PortGroup> out;
    for (const wsdl::Definition& service : definitions.services()) {
      PortGroup& group = out.emplace_back();
      group.name_ = service.name;
      for (const parse::Node& node : parse::Children(*service.node, parse::Space::wsdl, parse::Word::port)) {
        Port& port = group.ports_.emplace_back();
        port.name_ = node.get(parse::Word::name);
        port.address_ = addressOf(node);
        port.bound_ = bindings.bound(node, *service.in);
      }
    }
    return out;
  }

 private:
  static std::string_view addressOf(const parse::Node& port) {
    const parse::Node* at = port.first;
    while (at && at->word != parse::Word::address) at = at->next;
    return at ? at->get(parse::Word::location) : std::string_view();
  }
};

// Everything of a service. The resolver alone changes after loading, behind its lock; what it gave out stays.
struct Service::Content {
  std::unique_ptr<parse::Loaded> loaded;
  schema::Declarations declarations;
  wsdl::DefinitionSet definitions;
  std::mutex lock;
  schema::Resolver resolver;
  std::vector<PortGroup> services;
  std::vector<Port> ports;
  Reach reach;

  Content(std::unique_ptr<parse::Loaded> read, const Limits& limits)
      : loaded(std::move(read)),
        declarations(*loaded),
        definitions(*loaded),
        resolver(*loaded, declarations, limits) {
    BindingReader bindings(definitions, resolver);
    services = ServiceReader::read(definitions, bindings);
    for (const PortGroup& group : services)
      ports.insert(ports.end(), group.ports().begin(), group.ports().end());
    reach.follow(ports, resolver);
  }
};

Service::Service(std::shared_ptr<Content> content) noexcept : content_(std::move(content)) {}

std::string_view Service::targetNamespace() const noexcept {
  return content_->loaded->definitions.front().targetNamespace;
}
const std::vector<PortGroup>& Service::services() const noexcept { return content_->services; }
const std::vector<Port>& Service::ports() const noexcept { return content_->ports; }
std::span<const Element* const> Service::elements() const noexcept { return content_->reach.elements(); }
std::span<const Type* const> Service::types() const noexcept { return content_->reach.types(); }
const std::vector<Warning>& Service::warnings() const noexcept { return content_->loaded->warnings; }

const Type* Service::type(const Name& name) const {
  if (const Type* reached = content_->reach.type(name)) return reached;
  const std::lock_guard guard(content_->lock);
  schema::TypeEntry* found = content_->resolver.findType(name);
  return found ? &settleWhole(*found, content_->resolver) : nullptr;
}

const Element* Service::element(const Name& name) const {
  if (const Element* reached = content_->reach.element(name)) return reached;
  const std::lock_guard guard(content_->lock);
  schema::ElementEntry* found = content_->resolver.findElement(name);
  return found ? &settleWhole(*found, content_->resolver) : nullptr;
}

Service load(const std::string& location, const Options& options) {
  parse::Loader loader(options);
  return Service(std::make_shared<Service::Content>(loader.load(location, nullptr), options.limits));
}

Service loadText(const std::string& bytes, const std::string& location, const Options& options) {
  parse::Loader loader(options);
  return Service(std::make_shared<Service::Content>(loader.load(location, &bytes), options.limits));
}

}  // namespace ztservice
