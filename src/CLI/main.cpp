#include "CLI/CommandLine.h"
#include "Platform/Audio/AudioCapture.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Settings/DesktopSecrets.h"

int main(int count, char** arguments) {
  const nomely::Environment environment = nomely::Environment::current();
  const nomely::SystemClock clock;
  nomely::DesktopSecrets secrets(environment, nomely::posixFileSystem());
  const std::unique_ptr<nomely::HttpClient> http =
      nomely::makeHttpClient(nomely::NetworkOptions::of(environment));
  const std::unique_ptr<nomely::AudioCapture> audio = nomely::makeAudioCapture();
  return nomely::runCommandLine(
      {arguments + 1, arguments + count},
      {environment, clock, nomely::posixFileSystem(), secrets, *http, *audio});
}
