// SPDX-License-Identifier: MIT
// What a host application implements that brings a diagnostic session of its own. Its operations block: they
// return when the ECU has answered, and keep the application's events running meanwhile (a QEventLoop, not a
// sleep). Awaitable() makes of it what the server drives. Everything runs on the application's main thread,
// and no operation is called inside another one's wait, but for Close, which ends that wait.
//
// Every failure is a base::Failure with a number of base/ErrorNumbers.h.
//
// Versions are those of diag/viator3.h: these classes grow at their ends only, by operations with a default.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "base/Variant.h"
#include "diag/viator3.h"

namespace korval::hosted {

class Request;

/// As viator3::DataItem.
class DataItem : public viator3::Versioned {
 public:
  explicit DataItem(int version = viator3::kVersion) : Versioned(version) {}
  virtual const std::string& Name() const = 0;
  virtual base::Variant Value() const = 0;
  virtual std::string Text() const = 0;
  virtual std::string Unit() const = 0;
  virtual void SetValue(const base::Variant& value) = 0;
  virtual void SetText(const std::string& text) = 0;
  virtual std::shared_ptr<Request> OwningRequest() const = 0;
};

/// As viator3::Request.
class Request : public viator3::Versioned {
 public:
  using Items = std::vector<std::shared_ptr<DataItem>>;

  explicit Request(int version = viator3::kVersion) : Versioned(version) {}
  virtual const std::string& Name() const = 0;
  virtual void Execute() = 0;
  virtual const Items& Data() const = 0;
  virtual const Items& Parameters() const = 0;
};

/// As viator3::Ecu. One whose Protocol() is "KWP2000" or "DiagOnCAN" is asked for its identification; trouble
/// codes and identification are read with the requests of ISO 14230-3, through Send.
class Ecu : public viator3::Versioned {
 public:
  using Requests = std::vector<std::shared_ptr<Request>>;

  explicit Ecu(int version = viator3::kVersion) : Versioned(version) {}
  virtual const std::string& Function() const = 0;
  virtual const std::string& Name() const = 0;
  virtual const std::string& Protocol() const = 0;
  virtual bool Initialised() const = 0;
  virtual void Initialise() = 0;
  virtual void Reinitialise() = 0;
  virtual void Send(const base::ByteBuffer& request, base::ByteBuffer& answer) = 0;
  virtual const Requests& RequestList() = 0;
  virtual const std::vector<std::string>& ReferenceData() = 0;
  virtual std::shared_ptr<DataItem> FindAnswerItem(const std::string& name) = 0;
  virtual void LoadMessaging(const std::string& path) = 0;
};

/// As viator3::InstanceObject.
class InstanceObject : public viator3::Versioned {
 public:
  using NameResolver = viator3::InstanceObject::NameResolver;

  explicit InstanceObject(int version = viator3::kVersion) : Versioned(version) {}
  virtual void SetProtocol(std::shared_ptr<Ecu> ecu) = 0;
  virtual void SetNameResolver(NameResolver resolver) = 0;
  virtual base::Variant Get(const std::string& name) = 0;
  virtual void Set(const std::string& name, const base::Variant& value) = 0;
};

/// As viator3::Session.
class Session : public viator3::Versioned {
 public:
  explicit Session(int version = viator3::kVersion) : Versioned(version) {}
  virtual std::string Port() const = 0;
  virtual void SetPort(const std::string& port) = 0;
  /// Ends the session, and a wait that is under way with Failure 1000.
  virtual void Close() = 0;
  virtual void SetLanguage(const std::string& language) = 0;
  virtual void SetErrorsFile(const std::string& path) = 0;
  /// Tells of an ECU file that a client selected (full path). The server has read of it what description
  /// files need; what the session needs of it is its own affair.
  virtual void OfferEcuFile(const std::string& path) = 0;
  virtual std::shared_ptr<Ecu> EcuByFunction(const std::string& function) = 0;
  virtual std::vector<std::shared_ptr<Ecu>> Ecus() const = 0;
  virtual bool MessagingLoaded() const = 0;
  virtual void SendFrames(const std::vector<viator3::CanFrame>& frames) = 0;
  virtual std::shared_ptr<InstanceObject> CreateInstance(const std::string& prog_id) = 0;
};

/// The session as the server drives it. Null for null.
std::shared_ptr<viator3::Session> Awaitable(std::shared_ptr<Session> session,
                                            std::shared_ptr<base::EventLoop> loop);

}  // namespace korval::hosted
