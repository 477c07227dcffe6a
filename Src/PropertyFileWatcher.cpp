// PropertyFileWatcher.cpp - see PropertyFileWatcher.h.

#include "PropertyFileWatcher.h"

#include "PropertyDirectoryWatch.h"
#include "PropertyManagerOperations.h"

PropertyFileWatcher::PropertyFileWatcher(PropertyManager* manager)
    : m_manager(manager), m_watches(new PropertyDirectoryWatch()) {
  m_watches->Follow(PropertyManagerOperations::BoundPaths(*manager));
}

PropertyFileWatcher::~PropertyFileWatcher() { delete m_watches; }

void PropertyFileWatcher::Reload(PropertyManager* manager) {
  PropertyManagerOperations::Reload(*manager);
}

int PropertyFileWatcher::FileDescriptor() const { return m_watches->Fd(); }

bool PropertyFileWatcher::ProcessChanges() {
  const bool changed = m_watches->Fd() < 0 || m_watches->TakeNotices();
  // Files bound since the last call are watched from now on.
  m_watches->Follow(PropertyManagerOperations::BoundPaths(*m_manager));
  if (!changed) return false;
  Reload(m_manager);
  return true;
}
