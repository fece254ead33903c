#include "tovin/iNode.h"
#include "tovin/iProperty.h"
#include "tovin/iPropertyCollection.h"
#include "tovin/iXPathParser.h"

namespace tovin {

const ClassTagDecl iProperty::Tag("DraVolin.iProperty");
const ClassTagDecl iPropertyInfo::Tag("DraVolin.iPropertyInfo");
const ClassTagDecl iPropertyCollection::Tag("DraVolin.iPropertyCollection");
const ClassTagDecl iNode::Tag("DraVolin.iNode");
const ClassTagDecl iXPathParser::Tag("DraVolin.iXPathParser");

namespace {

// An interface answers for its own tag and for being counted.
template <class Interface>
void* identityOf(Interface* self, const ClassTag& tag) {
  return tag == Interface::Tag ? self : self->CountedObject::_SeekClassIdentity(tag);
}

}  // namespace

void* iProperty::_SeekClassIdentity(const ClassTag& tag) { return identityOf(this, tag); }
void* iPropertyCollection::_SeekClassIdentity(const ClassTag& tag) { return identityOf(this, tag); }
// A class of another making is asked for its objects.
unsigned iNode::attributeCount() const { return hasProperties() ? getProperties()->getSize() : 0; }

AttributeView iNode::viewAttribute(unsigned index) const {
  return AttributeView::of(*static_cast<const iPropertyCollection*>(getProperties())->get(index));
}

AttributeView iNode::viewValue() const { return AttributeView::of(getValue()); }

void* iNode::_SeekClassIdentity(const ClassTag& tag) { return identityOf(this, tag); }
void* iXPathParser::_SeekClassIdentity(const ClassTag& tag) { return identityOf(this, tag); }
void* iPropertyInfo::_SeekClassIdentity(const ClassTag& tag) { return tag == Tag ? this : nullptr; }

}  // namespace tovin
