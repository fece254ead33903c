#include "tovin/AllocBase.h"

#include <new>

namespace tovin {

void* AllocBase::_alloc(size_t bytes) noexcept { return ::operator new(bytes, std::nothrow); }
void AllocBase::_free(void* block) noexcept { ::operator delete(block); }

}  // namespace tovin
