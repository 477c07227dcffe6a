// PropertyLayout.cpp - see PropertyLayout.h.

#include "PropertyLayout.h"

#include <vector>

#include "PropertyChoices.h"
#include "PropertyManagerOperations.h"

namespace {

// The binding of manager to filePath, or null.
const void* FindBinding(PropertyManager* manager, const propstring& filePath) {
  for (const PropertyManagerOperations::Binding& binding :
       PropertyManagerOperations::Bindings(*manager)) {
    if (binding.path == filePath) return binding.id;
  }
  return nullptr;
}

}  // namespace

void PropertyLayout::SetKeepLayout(bool on) {
  PropertyChoices::ChooseForProcess(PropertyChoices::kKeepLayout, on);
}

bool PropertyLayout::KeepLayout() {
  return PropertyChoices::ForProcess(PropertyChoices::kKeepLayout);
}

void PropertyLayout::SetKeepLayout(PropertyManager* manager, bool on) {
  PropertyChoices::Choose(manager, PropertyChoices::kKeepLayout, on);
}

bool PropertyLayout::KeepLayout(const PropertyManager* manager) {
  return PropertyChoices::ForManager(manager, PropertyChoices::kKeepLayout);
}

bool PropertyLayout::SetKeepLayout(PropertyManager* manager,
                                   const propstring& filePath, bool on) {
  const void* binding = FindBinding(manager, filePath);
  if (binding == nullptr) return false;
  PropertyChoices::Choose(binding, PropertyChoices::kKeepLayout, on);
  return true;
}

bool PropertyLayout::KeepLayout(PropertyManager* manager,
                                const propstring& filePath) {
  const void* binding = FindBinding(manager, filePath);
  return binding != nullptr &&
         PropertyChoices::ForBinding(binding, PropertyChoices::kKeepLayout);
}
