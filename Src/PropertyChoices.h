// PropertyChoices.h - the opt-in settings that a program chose for the
// process, for one manager or for one file binding. Those of managers and
// bindings are kept beside them (their layout is fixed) and forgotten when
// they go. Internal to the library: not installed.
//
// The process-wide setting is the program's choice, else what the
// environment or the build says (PropertyDefaults). A binding's setting is
// its own choice, else its manager's, else the process-wide one. A binding
// knows no manager of its own: the manager that makes it records itself as its
// owner here.
//
// Thread-safe: one mutex; most programs choose nothing, and then a look-up
// takes no lock.

#ifndef SRC_PROPERTYCHOICES_H_
#define SRC_PROPERTYCHOICES_H_

class PropertyManager;

class PropertyChoices {
 public:
  enum Setting { kStrictValues, kLongLines, kKeepLayout, kSettings };

  // The process-wide choice.
  static void ChooseForProcess(Setting setting, bool on);
  static bool ForProcess(Setting setting);

  // Records on as the choice of owner (a manager, or the address that names
  // a binding while it lives) for setting.
  static void Choose(const void* owner, Setting setting, bool on);
  // Whether owner chose setting, and if so what (in *on).
  static bool Chosen(const void* owner, Setting setting, bool* on);
  // Records that manager made binding.
  static void Own(const PropertyManager* manager, const void* binding);
  // Forgets the choices of owner and, for a binding, its manager.
  static void Forget(const void* owner);

  // The setting that applies to manager: its choice, else ForProcess().
  static bool ForManager(const PropertyManager* manager, Setting setting);
  // The setting that applies to binding: its choice, else its manager's,
  // else ForProcess().
  static bool ForBinding(const void* binding, Setting setting);
};

#endif  // SRC_PROPERTYCHOICES_H_
