// PropertyRegistryListener.cpp - see PropertyRegistryListener.h.

#include "PropertyRegistryListener.h"

PropertyRegistryListener::~PropertyRegistryListener() {}
