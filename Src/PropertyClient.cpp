// PropertyClient.cpp - see PropertyClient.h.

#include "PropertyClient.h"

PropertyClient::~PropertyClient() {}
