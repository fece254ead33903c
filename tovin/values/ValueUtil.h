#pragma once

#include "tovin/values/Value.h"

/// Changing a value in place, by exchanging the object that a slot holds where the class has to change.
///
/// - Ownership: the slot owns its value; null when it has none. On a failure the slot keeps what it had.
/// - Errors: a read-only slot that holds a value is refused with PropertyAccessException
///   "Read-only property %ls cannot be updated"; the name is only used for that.
namespace tovin::util {

/// Replaces the value; one of the same class is copied into, and so stays the same object.
TOVIN_API void SetValue(Value*& slot, const Value& source, bool readOnly, const wchar_t* name);

/// Appends: nothing for a null source; a copy to a slot without a value; elements to a list; text to a text,
/// with the separator between if there is one; bits behind bits; a number to an integer makes a list of
/// integers where all are integers. Everything else becomes a list of texts.
TOVIN_API void AppendToValue(Value*& slot, const Value& source, bool readOnly, const wchar_t* name,
                             const wchar_t* separator = nullptr);

/// Converts the value to a class of the family: by its text, element by element for lists; numbers to numbers
/// by value, reals cut towards zero. "Cannot convert \"%ls\" to class %hs" for a text that is no such number,
/// and for a number out of range.
TOVIN_API void CoerceToType(Value*& slot, const ClassTag& target);

/// "Read-only property %ls cannot be updated".
[[noreturn]] TOVIN_API void refuseReadOnly(const wchar_t* name);

}  // namespace tovin::util
