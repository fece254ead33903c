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

  // The same with the operations of one name only.
  static std::vector<PortGroup> narrowed(std::vector<PortGroup> groups, std::string_view operation) {
    for (PortGroup& group : groups) {
      for (Port& port : group.ports_) {
        auto bound = std::make_shared<Port::Bound>(*port.bound_);
        std::erase_if(bound->operations, [&](const Operation& one) { return one.name() != operation; });
        port.bound_ = std::move(bound);
      }
    }
    return groups;
  }

 private:
  static std::string_view addressOf(const parse::Node& port) {
    const parse::Node* at = port.first;
    while (at && at->word != parse::Word::address) at = at->next;
    return at ? at->get(parse::Word::location) : std::string_view();
  }
};

namespace {

// What the documents say. The resolver alone changes after loading, behind its lock; what it gave out stays.
struct Model {
  std::unique_ptr<parse::Loaded> loaded;
  schema::Declarations declarations;
  wsdl::DefinitionSet definitions;
  std::mutex lock;
  schema::Resolver resolver;

  Model(std::unique_ptr<parse::Loaded> read, const Limits& limits)
      : loaded(std::move(read)),
        declarations(*loaded),
        definitions(*loaded),
        resolver(*loaded, declarations, limits) {}
};

}  // namespace

struct Service::Content {
  std::shared_ptr<Model> model;
  std::vector<PortGroup> services;
  std::vector<Port> ports;
  Reach reach;

  Content(std::shared_ptr<Model> of, std::vector<PortGroup> groups)
      : model(std::move(of)), services(std::move(groups)) {
    for (const PortGroup& group : services)
      ports.insert(ports.end(), group.ports().begin(), group.ports().end());
    const std::lock_guard guard(model->lock);
    reach.follow(ports, model->resolver);
  }
};

Service::Service(std::shared_ptr<const Content> content) noexcept : content_(std::move(content)) {}

Service Service::narrowedTo(std::string_view operation) const {
  return Service(std::make_shared<const Content>(content_->model,
                                                 ServiceReader::narrowed(content_->services, operation)));
}

std::string_view Service::targetNamespace() const noexcept {
  return content_->model->loaded->definitions.front().targetNamespace;
}
const std::vector<PortGroup>& Service::services() const noexcept { return content_->services; }
const std::vector<Port>& Service::ports() const noexcept { return content_->ports; }
std::span<const Element* const> Service::elements() const noexcept { return content_->reach.elements(); }
std::span<const Type* const> Service::types() const noexcept { return content_->reach.types(); }
const std::vector<Warning>& Service::warnings() const noexcept { return content_->model->loaded->warnings; }

const Type* Service::type(const Name& name) const {
  if (const Type* reached = content_->reach.type(name)) return reached;
  Model& model = *content_->model;
  const std::lock_guard guard(model.lock);
  schema::TypeEntry* found = model.resolver.findType(name);
  return found ? &settleWhole(*found, model.resolver) : nullptr;
}

const Element* Service::element(const Name& name) const {
  if (const Element* reached = content_->reach.element(name)) return reached;
  Model& model = *content_->model;
  const std::lock_guard guard(model.lock);
  schema::ElementEntry* found = model.resolver.findElement(name);
  return found ? &settleWhole(*found, model.resolver) : nullptr;
}

namespace {

Service serviceOf(const std::string& location, const std::string* bytes, const Options& options) {
  parse::Loader loader(options);
  auto model = std::make_shared<Model>(loader.load(location, bytes), options.limits);
  BindingReader bindings(model->definitions, model->resolver);
  std::vector<PortGroup> services = ServiceReader::read(model->definitions, bindings);
  return Service(std::make_shared<const Service::Content>(std::move(model), std::move(services)));
}

}  // namespace

Service load(const std::string& location, const Options& options) {
  return serviceOf(location, nullptr, options);
}

Service loadText(const std::string& bytes, const std::string& location, const Options& options) {
  return serviceOf(location, &bytes, options);
}

}  // namespace ztservice
