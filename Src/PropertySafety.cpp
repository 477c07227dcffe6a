// PropertySafety.cpp - see PropertySafety.h.

#include "PropertySafety.h"

#include "PropertyChoices.h"
#include "PropertyFileTroubles.h"
#include "PropertyManagerOperations.h"

void PropertySafety::SetStrictValues(bool on) {
  PropertyChoices::ChooseForProcess(PropertyChoices::kStrictValues, on);
}

bool PropertySafety::StrictValues() {
  return PropertyChoices::ForProcess(PropertyChoices::kStrictValues);
}

void PropertySafety::SetStrictValues(PropertyManager* manager, bool on) {
  PropertyChoices::Choose(manager, PropertyChoices::kStrictValues, on);
}

bool PropertySafety::StrictValues(const PropertyManager* manager) {
  return PropertyChoices::ForManager(manager, PropertyChoices::kStrictValues);
}

void PropertySafety::ForgetManager(const PropertyManager* manager) {
  PropertyChoices::Forget(manager);
}

void PropertySafety::SetLongLines(bool on) {
  PropertyChoices::ChooseForProcess(PropertyChoices::kLongLines, on);
}

bool PropertySafety::LongLines() {
  return PropertyChoices::ForProcess(PropertyChoices::kLongLines);
}

std::vector<PropertySafety::FileTrouble> PropertySafety::FileTroubles(
    PropertyManager* manager) {
  std::vector<FileTrouble> troubles;
  for (const PropertyManagerOperations::Binding& binding :
       PropertyManagerOperations::Bindings(*manager)) {
    troubles.push_back(PropertyFileTroubles::Last(binding.id, binding.path));
  }
  return troubles;
}

void PropertySafety::ForgetFileTroubles(PropertyManager* manager) {
  for (const PropertyManagerOperations::Binding& binding :
       PropertyManagerOperations::Bindings(*manager)) {
    PropertyFileTroubles::Forget(binding.id);
  }
}
