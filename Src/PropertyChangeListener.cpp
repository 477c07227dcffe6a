// PropertyChangeListener.cpp - see PropertyChangeListener.h.

#include "PropertyChangeListener.h"

PropertyChangeListener::~PropertyChangeListener() {}
