#include "CLI/CommandLine.h"
#include "Platform/Audio/AudioCapture.h"
#include "Platform/Concurrency/Timers.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/WebSocketClient.h"
#include "Platform/Settings/DesktopSecrets.h"

int main(int count, char** arguments) {
  const nomely::Environment environment = nomely::Environment::current();
  const nomely::SystemClock clock;
  nomely::DesktopSecrets secrets(environment, nomely::posixFileSystem());
  const nomely::NetworkOptions network = nomely::NetworkOptions::of(environment);
  const std::unique_ptr<nomely::HttpClient> http = nomely::makeHttpClient(network);
  const std::unique_ptr<nomely::WebSocketClient> webSockets = nomely::makeWebSocketClient(network);
  const std::unique_ptr<nomely::Timers> timers = nomely::makeSystemTimers();
  const std::unique_ptr<nomely::AudioCapture> audio = nomely::makeAudioCapture();
  return nomely::runCommandLine({arguments + 1, arguments + count},
                                {environment, clock, nomely::posixFileSystem(), secrets, *http,
                                 *webSockets, *timers, *audio});
}
