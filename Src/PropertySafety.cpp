// PropertySafety.cpp - see PropertySafety.h.

#include "PropertySafety.h"

#include <atomic>
#include <map>
#include <mutex>

#include "PropertyDefaults.h"
#include "PropertyFileTroubles.h"
#include "PropertyManagerOperations.h"

namespace {

// -1 until the program chooses; then 0 or 1.
std::atomic<int> g_strictValues(-1);
std::atomic<int> g_longLines(-1);

// The managers with a choice of their own. Most programs have none, so the
// count spares the check of every set a lock.
std::atomic<int> g_managerChoices(0);

std::mutex& ManagerChoicesMutex() {
  static std::mutex* mutex = new std::mutex;
  return *mutex;
}

std::map<const PropertyManager*, bool>& ManagerChoices() {
  static std::map<const PropertyManager*, bool>* choices =
      new std::map<const PropertyManager*, bool>;
  return *choices;
}

bool Chosen(const std::atomic<int>& choice, bool (*byDefault)()) {
  const int chosen = choice.load(std::memory_order_relaxed);
  return chosen < 0 ? byDefault() : chosen != 0;
}

}  // namespace

void PropertySafety::SetStrictValues(bool on) {
  g_strictValues.store(on ? 1 : 0, std::memory_order_relaxed);
}

bool PropertySafety::StrictValues() {
  return Chosen(g_strictValues, &PropertyDefaults::StrictValues);
}

void PropertySafety::SetStrictValues(PropertyManager* manager, bool on) {
  std::lock_guard<std::mutex> lock(ManagerChoicesMutex());
  if (ManagerChoices().insert(std::make_pair(manager, on)).second) {
    g_managerChoices.fetch_add(1);
  } else {
    ManagerChoices()[manager] = on;
  }
}

bool PropertySafety::StrictValues(const PropertyManager* manager) {
  if (g_managerChoices.load() != 0) {
    std::lock_guard<std::mutex> lock(ManagerChoicesMutex());
    std::map<const PropertyManager*, bool>::const_iterator it =
        ManagerChoices().find(manager);
    if (it != ManagerChoices().end()) return it->second;
  }
  return StrictValues();
}

void PropertySafety::ForgetManager(const PropertyManager* manager) {
  if (g_managerChoices.load() == 0) return;
  std::lock_guard<std::mutex> lock(ManagerChoicesMutex());
  if (ManagerChoices().erase(manager) != 0) g_managerChoices.fetch_sub(1);
}

void PropertySafety::SetLongLines(bool on) {
  g_longLines.store(on ? 1 : 0, std::memory_order_relaxed);
}

bool PropertySafety::LongLines() {
  return Chosen(g_longLines, &PropertyDefaults::LongLines);
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
