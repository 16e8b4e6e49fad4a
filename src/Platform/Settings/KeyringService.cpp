#include "Platform/Settings/KeyringService.h"

#include <condition_variable>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include <libsecret/secret.h>

#include "Platform/System/LazyLibrary.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr std::chrono::seconds longestCall{5};
constexpr std::chrono::seconds rest{30};

constexpr const char* lockedText =
    "密钥环锁着，请先解锁（在桌面登录，或打开“密码和密钥”解锁登录密钥环）再试";
constexpr const char* silentText = "密钥环没有回应，请稍后再试，或注销后重新登录";

template <typename Function>
Function* find(const char* name) {
  // The functions of the libraries below are found through its handle, too.
  static const LazyLibrary library("libsecret-1.so.0");
  return library.function<Function>(name);
}

// What is called of libsecret and of the libraries below it.
struct Functions {
  decltype(&g_bus_get_sync) busGet = find<decltype(g_bus_get_sync)>("g_bus_get_sync");
  decltype(&g_dbus_connection_set_exit_on_close) setExitOnClose =
      find<decltype(g_dbus_connection_set_exit_on_close)>("g_dbus_connection_set_exit_on_close");
  decltype(&g_cancellable_new) cancellableNew =
      find<decltype(g_cancellable_new)>("g_cancellable_new");
  decltype(&g_cancellable_cancel) cancel =
      find<decltype(g_cancellable_cancel)>("g_cancellable_cancel");
  decltype(&g_cancellable_is_cancelled) isCancelled =
      find<decltype(g_cancellable_is_cancelled)>("g_cancellable_is_cancelled");
  decltype(&g_object_unref) unref = find<decltype(g_object_unref)>("g_object_unref");
  decltype(&g_error_free) errorFree = find<decltype(g_error_free)>("g_error_free");
  decltype(&g_list_free) listFree = find<decltype(g_list_free)>("g_list_free");
  decltype(&g_hash_table_unref) tableUnref =
      find<decltype(g_hash_table_unref)>("g_hash_table_unref");
  decltype(&secret_service_get_type) serviceType =
      find<decltype(secret_service_get_type)>("secret_service_get_type");
  decltype(&secret_service_open_sync) openService =
      find<decltype(secret_service_open_sync)>("secret_service_open_sync");
  decltype(&secret_collection_for_alias_sync) collectionForAlias =
      find<decltype(secret_collection_for_alias_sync)>("secret_collection_for_alias_sync");
  decltype(&secret_collection_get_locked) isCollectionLocked =
      find<decltype(secret_collection_get_locked)>("secret_collection_get_locked");
  decltype(&secret_attributes_build) attributes =
      find<decltype(secret_attributes_build)>("secret_attributes_build");
  decltype(&secret_service_search_sync) search =
      find<decltype(secret_service_search_sync)>("secret_service_search_sync");
  decltype(&secret_item_get_locked) isItemLocked =
      find<decltype(secret_item_get_locked)>("secret_item_get_locked");
  decltype(&secret_item_load_secret_sync) loadSecret =
      find<decltype(secret_item_load_secret_sync)>("secret_item_load_secret_sync");
  decltype(&secret_item_get_secret) secretOf =
      find<decltype(secret_item_get_secret)>("secret_item_get_secret");
  decltype(&secret_item_set_secret_sync) setSecret =
      find<decltype(secret_item_set_secret_sync)>("secret_item_set_secret_sync");
  decltype(&secret_item_create_sync) createItem =
      find<decltype(secret_item_create_sync)>("secret_item_create_sync");
  decltype(&secret_item_delete_sync) deleteItem =
      find<decltype(secret_item_delete_sync)>("secret_item_delete_sync");
  decltype(&secret_value_new) valueNew = find<decltype(secret_value_new)>("secret_value_new");
  decltype(&secret_value_get) valueGet = find<decltype(secret_value_get)>("secret_value_get");
  decltype(&secret_value_unref) valueUnref =
      find<decltype(secret_value_unref)>("secret_value_unref");
};

// Throws LazyLibrary::MissingError.
const Functions& functions() {
  static const Functions table;
  return table;
}

template <typename Object>
using Owned = std::unique_ptr<Object, void (*)(Object*)>;

template <typename Object>
Owned<Object> owned(Object* object) {
  return {object, [](Object* held) { functions().unref(held); }};
}

// The schema is part of what an item is found by.
const SecretSchema schema = {"com.tarvik.Nomely.Secret",
                             SECRET_SCHEMA_NONE,
                             {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                              {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
                              {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
                             0,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr};

bool namesBus(const Environment& environment) {
  if (const auto address = environment.get("DBUS_SESSION_BUS_ADDRESS")) return !address->empty();
  // Where the library would look next; it would start a bus of its own after that.
  const auto runtime = environment.get("XDG_RUNTIME_DIR");
  std::error_code ignored;
  return runtime && std::filesystem::exists(std::filesystem::path(*runtime) / "bus", ignored);
}

}  // namespace

// One question to the service: its proxies and the time that it may take.
class KeyringService::Call {
 public:
  Call(std::string_view service, std::string_view account)
      : cancellable_(owned(f_.cancellableNew())),
        attributes_(f_.attributes(&schema, "service", std::string(service).c_str(), "account",
                                  std::string(account).c_str(), nullptr),
                    [](GHashTable* table) { functions().tableUnref(table); }),
        watch_([this](const std::stop_token& stop) { watch(stop); }) {
    connect();
  }
  ~Call() {
    if (error_ != nullptr) f_.errorFree(error_);
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  [[nodiscard]] bool isSilent() const { return f_.isCancelled(cancellable_.get()) != 0; }
  [[nodiscard]] bool hasKeyring() const { return collection_ != nullptr; }
  // Of the keyring into which new secrets go.
  [[nodiscard]] bool isLocked() const { return f_.isCollectionLocked(collection_.get()) != 0; }

  struct Items {
    std::vector<Owned<SecretItem>> open;
    bool isAnyLocked = false;
  };
  // Throws SecretError.
  [[nodiscard]] Items items() {
    GList* const found =
        f_.search(service_.get(), &schema, attributes_.get(), SECRET_SEARCH_ALL, cancel(), &error_);
    throwIfFailed();
    Items items;
    for (GList* at = found; at != nullptr; at = at->next) {
      auto item = owned(static_cast<SecretItem*>(at->data));
      if (f_.isItemLocked(item.get()) != 0)
        items.isAnyLocked = true;
      else
        items.open.push_back(std::move(item));
    }
    f_.listFree(found);
    return items;
  }

  // The same where a change is to follow.
  [[nodiscard]] Items openItems() {
    Items found = items();
    if (found.isAnyLocked || isLocked()) throw SecretError(SecretError::Kind::locked, lockedText);
    return found;
  }

  [[nodiscard]] std::string secretOf(SecretItem* item) {
    f_.loadSecret(item, cancel(), &error_);
    throwIfFailed();
    const Value value(f_.secretOf(item), unrefValue);
    if (!value) throw SecretError(SecretError::Kind::failed, "密钥环没有交出密钥，请再试一次");
    gsize length = 0;
    const gchar* const text = f_.valueGet(value.get(), &length);
    return {text, length};
  }

  void put(const Items& items, std::string_view account, std::string_view secret) {
    const Value value(f_.valueNew(secret.data(), static_cast<gssize>(secret.size()), "text/plain"),
                      unrefValue);
    if (!items.open.empty())
      f_.setSecret(items.open.front().get(), value.get(), cancel(), &error_);
    else
      (void)owned(f_.createItem(collection_.get(), &schema, attributes_.get(),
                                std::string(account).c_str(), value.get(),
                                SECRET_ITEM_CREATE_REPLACE, cancel(), &error_));
    throwIfFailed();
  }

  void remove(SecretItem* item) {
    f_.deleteItem(item, cancel(), &error_);
    throwIfFailed();
  }

 private:
  using Value = std::unique_ptr<SecretValue, void (*)(SecretValue*)>;
  static void unrefValue(SecretValue* value) {
    if (value != nullptr) functions().valueUnref(value);
  }

  [[nodiscard]] GCancellable* cancel() const { return cancellable_.get(); }

  void connect() {
    const auto bus = owned(f_.busGet(G_BUS_TYPE_SESSION, cancel(), &error_));
    if (!bus) return forgetError();
    // By default the process would end together with the bus.
    f_.setExitOnClose(bus.get(), 0);
    service_ = owned(
        f_.openService(f_.serviceType(), nullptr, SECRET_SERVICE_OPEN_SESSION, cancel(), &error_));
    if (!service_) return forgetError();
    collection_ = owned(f_.collectionForAlias(service_.get(), SECRET_COLLECTION_DEFAULT,
                                              SECRET_COLLECTION_NONE, cancel(), &error_));
    forgetError();
  }

  void forgetError() {
    if (error_ == nullptr) return;
    Log::information(LogChannel::app, "Keyring: {}", error_->message);
    f_.errorFree(std::exchange(error_, nullptr));
  }

  void throwIfFailed() {
    if (isSilent()) throw SecretError(SecretError::Kind::unavailable, silentText);
    if (error_ == nullptr) return;
    forgetError();
    throw SecretError(SecretError::Kind::failed, "密钥环拒绝了这次操作，请解锁或重启它后再试");
  }

  void watch(const std::stop_token& stop) {
    std::unique_lock lock(watchLock_);
    if (!ended_.wait_for(lock, stop, longestCall, [] { return false; }) && !stop.stop_requested())
      f_.cancel(cancel());
  }

  const Functions& f_ = functions();
  Owned<GCancellable> cancellable_;
  std::unique_ptr<GHashTable, void (*)(GHashTable*)> attributes_;
  Owned<::SecretService> service_ = owned<::SecretService>(nullptr);
  Owned<SecretCollection> collection_ = owned<SecretCollection>(nullptr);
  GError* error_ = nullptr;
  std::mutex watchLock_;
  std::condition_variable_any ended_;
  std::jthread watch_;  // ends first, since it uses what stands before it
};

KeyringService::KeyringService(const Environment& environment) : hasBus_(namesBus(environment)) {}

template <typename Body>
bool KeyringService::ask(std::string_view service, std::string_view account, Body body) {
  if (!hasBus_) return false;
  const std::lock_guard guard(mutex_);
  const auto now = std::chrono::steady_clock::now();
  const auto silent = [] { return SecretError(SecretError::Kind::unavailable, silentText); };
  if (silentSince_ && now - *silentSince_ < rest) throw silent();
  try {
    Call call(service, account);
    silentSince_.reset();
    try {
      if (call.hasKeyring()) body(call);
    } catch (const SecretError&) {
      if (call.isSilent()) silentSince_ = now;
      throw;
    }
    if (call.isSilent()) silentSince_ = now;
    if (call.hasKeyring()) return true;
  } catch (const LazyLibrary::MissingError& error) {
    Log::information(LogChannel::app, "Keyring: {}", error.what());
  }
  if (silentSince_) throw silent();
  return false;
}

std::optional<SecretLookup> KeyringService::lookUp(std::string_view service,
                                                   std::string_view account) {
  SecretLookup result;
  try {
    const bool isThere = ask(service, account, [&](Call& call) {
      const Call::Items items = call.items();
      if (!items.open.empty())
        result = {SecretLookup::State::found, call.secretOf(items.open.front().get())};
      else if (items.isAnyLocked || call.isLocked())
        throw SecretError(SecretError::Kind::locked, lockedText);
    });
    if (!isThere) return std::nullopt;
  } catch (const SecretError& error) {
    result = {.state = SecretLookup::State::unavailable, .problem = error.what()};
  }
  return result;
}

bool KeyringService::store(std::string_view service, std::string_view account,
                           std::string_view value) {
  return ask(service, account, [&](Call& call) {
    const Call::Items items = call.openItems();
    call.put(items, account, value);
  });
}

bool KeyringService::remove(std::string_view service, std::string_view account) {
  return ask(service, account, [&](Call& call) {
    for (const auto& item : call.openItems().open) call.remove(item.get());
  });
}

}  // namespace nomely
