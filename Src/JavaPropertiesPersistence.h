// JavaPropertiesPersistence.h - binds the properties of one flat manager to
// one key=value file.
//
// A manager attaches the object as a client, a registry listener and, for a
// read-write binding, a change listener. From then on every property that
// becomes known gets the value stored for its key in the file, and every value
// change rewrites the whole file: the file is read afresh, the values of all
// bound properties are merged into it, and it is written back truncated. Keys
// of the file that no bound property owns are kept; comments, order and
// layout are not. Nothing is cached between calls.
//
// File trouble is logged (level 1) and never reported to the caller. A null
// property passed to any callback aborts with an assertion failure.
//
// Thread safety: no lock of its own; runs under the lock of whoever changes
// or registers a property (the manager's, or the property's own).
//
// ABI: the bases, their order, the member order and the virtual-function
// order are part of the binary interface. Do not reorder, insert or remove.

#ifndef SRC_JAVAPROPERTIESPERSISTENCE_H_
#define SRC_JAVAPROPERTIESPERSISTENCE_H_

#include <vector>

#include "JavaProperties.h"
#include "Property.h"
#include "PropertyChangeListener.h"
#include "PropertyClient.h"
#include "PropertyRegistryListener.h"
#include "PropertyThreadGuard.h"

class JavaPropertiesPersistence : public PropertyClient,
                                  public PropertyRegistryListener,
                                  public PropertyChangeListener {
 public:
  // header is written as a "#" comment line on every store ("" for none).
  // No file access.
  JavaPropertiesPersistence(const propstring& filePath,
                            const propstring& header);
  // Releases its own members only: no file access, no property deleted.
  virtual ~JavaPropertiesPersistence();

  propstring GetFilePath() const;

  // Binds property (not owned) and loads its stored value, if any.
  void RegisteredProperty(Property* property) override;
  // Forgets the first binding of property, if any.
  void UnregisterProperty(Property* property);
  // Same as RegisteredProperty.
  void AddingProperty(Property* property) override;
  // Same as UnregisterProperty.
  void RemovingProperty(Property* property) override;
  // Rewrites the whole file, whichever property changed.
  void PropertyChanged(Property* property) override;

  // Reads the file afresh, merges every bound property's value into it and
  // rewrites it. Logs "Can not write File '<path>'" if it cannot be opened.
  void DoStore();
  // Reads the file into store. Logs "Can not read File '<path>'" and leaves
  // store as it was if the file cannot be opened.
  void DoLoad(JavaProperties& store);
  // Reads the file once and gives every bound property its stored value.
  void DoLoadAll();
  // Gives property the value store holds for its key, if any. A value the
  // property rejects is logged and skipped; the property keeps its value.
  void SetValue(Property* property, JavaProperties& store);

 protected:
  // Not client interface: reloads on outside changes reach the members.
  friend class PropertyManagerOperations;

  std::vector<Property*> m_boundProperties;  // Not owned.
  propstring m_filePath;
  propstring m_header;
};

#endif  // SRC_JAVAPROPERTIESPERSISTENCE_H_
