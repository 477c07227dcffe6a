// PropertyChoices.cpp - see PropertyChoices.h.

#include "PropertyChoices.h"

#include <atomic>
#include <map>
#include <mutex>

#include "PropertyDefaults.h"

namespace {

// -1 for no choice, else 0 or 1, by setting.
struct Choices {
  Choices() {
    for (int& choice : setting) choice = -1;
  }
  int setting[PropertyChoices::kSettings];
};

struct Table {
  std::mutex mutex;
  std::map<const void*, Choices> choices;
  std::map<const void*, const void*> owners;  // Binding to its manager.
};

// Never destroyed: bindings may go after static destruction began.
Table& TheTable() {
  static Table* table = new Table;
  return *table;
}

// Owners with a choice; while none has one, look-ups take no lock.
std::atomic<int> g_choosers(0);

// The program's process-wide choices: -1 until it makes one, then 0 or 1.
std::atomic<int> g_process[PropertyChoices::kSettings] = {{-1}, {-1}, {-1}};

bool ByDefault(PropertyChoices::Setting setting) {
  switch (setting) {
    case PropertyChoices::kStrictValues:
      return PropertyDefaults::StrictValues();
    case PropertyChoices::kLongLines:
      return PropertyDefaults::LongLines();
    case PropertyChoices::kKeepLayout:
      return PropertyDefaults::KeepLayout();
    case PropertyChoices::kSettings:
      break;
  }
  return false;
}

bool Find(const Table& table, const void* owner,
          PropertyChoices::Setting setting, bool* on) {
  std::map<const void*, Choices>::const_iterator it = table.choices.find(owner);
  if (it == table.choices.end() || it->second.setting[setting] < 0) {
    return false;
  }
  *on = it->second.setting[setting] != 0;
  return true;
}

}  // namespace

void PropertyChoices::ChooseForProcess(Setting setting, bool on) {
  g_process[setting].store(on ? 1 : 0, std::memory_order_relaxed);
}

bool PropertyChoices::ForProcess(Setting setting) {
  const int chosen = g_process[setting].load(std::memory_order_relaxed);
  return chosen < 0 ? ByDefault(setting) : chosen != 0;
}

void PropertyChoices::Choose(const void* owner, Setting setting, bool on) {
  Table& table = TheTable();
  std::lock_guard<std::mutex> lock(table.mutex);
  std::map<const void*, Choices>::iterator it = table.choices.find(owner);
  if (it == table.choices.end()) {
    it = table.choices.insert(std::make_pair(owner, Choices())).first;
    g_choosers.fetch_add(1);
  }
  it->second.setting[setting] = on ? 1 : 0;
}

bool PropertyChoices::Chosen(const void* owner, Setting setting, bool* on) {
  if (g_choosers.load() == 0) return false;
  Table& table = TheTable();
  std::lock_guard<std::mutex> lock(table.mutex);
  return Find(table, owner, setting, on);
}

void PropertyChoices::Own(const PropertyManager* manager, const void* binding) {
  Table& table = TheTable();
  std::lock_guard<std::mutex> lock(table.mutex);
  table.owners[binding] = manager;
}

void PropertyChoices::Forget(const void* owner) {
  Table& table = TheTable();
  std::lock_guard<std::mutex> lock(table.mutex);
  table.owners.erase(owner);
  if (table.choices.erase(owner) != 0) g_choosers.fetch_sub(1);
}

bool PropertyChoices::ForManager(const PropertyManager* manager,
                                 Setting setting) {
  bool on = false;
  return Chosen(manager, setting, &on) ? on : ForProcess(setting);
}

bool PropertyChoices::ForBinding(const void* binding, Setting setting) {
  if (g_choosers.load() == 0) return ForProcess(setting);
  {
    Table& table = TheTable();
    std::lock_guard<std::mutex> lock(table.mutex);
    bool on = false;
    if (Find(table, binding, setting, &on)) return on;
    std::map<const void*, const void*>::const_iterator owner =
        table.owners.find(binding);
    if (owner != table.owners.end() &&
        Find(table, owner->second, setting, &on)) {
      return on;
    }
  }
  return ForProcess(setting);
}
