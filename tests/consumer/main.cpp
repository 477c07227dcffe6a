// main.cpp - a program that uses an installed libproperties: it binds a
// domain to a file, registers and sets a property, and checks what the
// library wrote, what it reads back and what it rejects. It also calls
// TextNumbers, the installed companion library, directly.
//
//   consumer DIR    works in DIR (which must exist); prints "ok" on success

#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "Properties.h"
#include "TextNumbers.h"

namespace {

int failures = 0;

void Expect(bool ok, const std::string& what) {
  if (!ok) {
    std::cerr << "consumer: " << what << "\n";
    ++failures;
  }
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path.c_str(), std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: consumer DIR\n";
    return 2;
  }
  const std::string path = std::string(argv[1]) + "/consumer.properties";
  std::remove(path.c_str());

  JavaPropertyManager* manager =
      Properties::GetInstance()->GetJavaPropertyManager("consumer");
  Expect(manager != NULL, "no manager");
  if (manager == NULL) return 1;
  manager->RegisterPersistence(path, "consumer settings");
  Property* port =
      manager->RegisterProperty("PROPERTY_TYPE_INTEGER", "port", "8080");
  Expect(port != NULL && port->GetPropertyType() == "PROPERTY_TYPE_INTEGER",
         "port is not an integer property");

  manager->SetValue("port", "9090");
  Expect(manager->GetValue("port") == "9090",
         "port reads back '" + manager->GetValue("port") + "'");
  Expect(ReadFile(path) == "#consumer settings\nport=9090\n",
         "file holds '" + ReadFile(path) + "'");

  // The exception crosses the library boundary as its own type.
  std::string message;
  try {
    manager->SetValue("port", "12x");
  } catch (Property::WrongValue& e) {
    message = e.m_message;
  }
  Expect(message == "Property 'port' can only contain 'an integer value'",
         "rejection message '" + message + "'");
  Expect(manager->GetValue("port") == "9090", "rejected value was stored");

  // TextNumbers, called directly: the value the property holds, and a text
  // it refuses with its own exception.
  Expect(TextNumbers::StdStringToInteger(manager->GetValue("port")) == 9090,
         "TextNumbers reads the port as another number");
  Expect(TextNumbers::StdStringToDouble("0.5") == 0.5,
         "TextNumbers reads 0.5 as another number");
  bool refused = false;
  try {
    TextNumbers::StdStringToInteger("12x");
  } catch (TextNumbers::NotAnInteger& e) {
    refused = std::string(e.what()) == "not an integer: \"12x\"";
  }
  Expect(refused, "TextNumbers does not refuse '12x' as documented");

  if (failures != 0) return 1;
  std::cout << "ok\n";
  return 0;
}
