#include "tovin/AttributeView.h"

#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/NullValue.h"

namespace tovin {

WideString AttributeView::getText() const {
  switch (kind) {
    case Kind::text: {
      WideString text;
      text.setLength(length);
      copyTo(text.data());
      return text;
    }
    case Kind::nullText:
      return {};
    case Kind::nullValue:
      return NullValue::shared().getText();
    case Kind::number:
      return DoubleValue(number).getText();
    case Kind::integer:
      return IntegerValue(integer).getText();
    default:
      return object().getText();
  }
}

}  // namespace tovin
