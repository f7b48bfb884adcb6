#include <Infrastructure/OxaCore/Encryption.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

using namespace Oxa::Core;

const char* const sPATH = "Software\\Acme\\Probe";

// Keeps a password where a glance into the configuration doesn't show it.
void Keep(Encryptor& encryptor) {
  std::string password;
  if (!encryptor.LoadPassword(password, sPATH, "Password", HKEY_CURRENT_USER))
    std::cout << "no password yet\n";
  encryptor.SavePassword("s3cret", sPATH, "Password", HKEY_CURRENT_USER);
  if (encryptor.LoadPassword(password, sPATH, "Password", HKEY_CURRENT_USER)) std::cout << password << '\n';
}

void Hide(Encryptor& encryptor) {
  std::string text = "attack at dawn";
  long long number = 42;
  encryptor.Encrypt(text, "a key of the program's own");
  encryptor.Encrypt(number, "a key of the program's own");
  std::cout << text.size() << " bytes, " << (number == 42 ? "plain" : "hidden") << '\n';
  encryptor.Decrypt(text, "a key of the program's own");
  encryptor.Decrypt(number, "a key of the program's own");
  std::cout << text << ", " << number << '\n';
}

int main() {
  InitializeOxaCore();
  ::setenv("XDG_CONFIG_HOME", std::filesystem::absolute("secrets.config").c_str(), 1);  // not into the user's
  const boost::shared_ptr<Encryptor> encryptor = Encryptor::Acquire("", Encryptor::eRSA_FULL, "");
  try {
    if (encryptor) {
      Keep(*encryptor);
      Hide(*encryptor);
    } else {
      std::cout << Encryptor::GetLastAcquisitionError() << '\n';
    }
  } catch (const Error& error) {  // a key of the registry couldn't be made
    std::cout << error.what() << '\n';
  }
  std::filesystem::remove_all("secrets.config");
  ShutdownOxaCore();
}
