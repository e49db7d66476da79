// SPDX-License-Identifier: MIT
// What a diagnostic-session library must offer, whatever protocols its ECUs speak. The server drives ECUs
// through these classes alone. Everything runs on the server's one thread; an operation that talks to an ECU
// is a task (base/Task.h), which stands aside while it waits. Whatever an operation works on it holds itself:
// events happen meanwhile, and may close the session or let go of everything. A session that is closed ends
// the waits on it with Failure 1000.
//
// Every failure is a base::Failure with a number of base/ErrorNumbers.h.
//
// Versions: an interface grows at its end only, by operations with a default. A class remembers the version
// that it was compiled with; what it cannot have is never called on it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "base/ByteBuffer.h"
#include "base/Failure.h"
#include "base/Task.h"
#include "base/Variant.h"

namespace korval::viator3 {

/// The version of these interfaces.
inline constexpr int kVersion = 1;

/// What remembers its version. Each class below takes it as a default argument, which the code that derives
/// from it compiles in.
class Versioned {
 public:
  explicit Versioned(int version) : version_(version) {}
  virtual ~Versioned() = default;
  int Version() const { return version_; }

 private:
  int version_;
};

class Request;

/// One value in an ECU's answer (read only) or in a request sent to it (writable).
class DataItem : public Versioned {
 public:
  explicit DataItem(int version = kVersion) : Versioned(version) {}
  virtual const std::string& Name() const = 0;
  /// The value of the last answer, or the one set; Empty when there is none or it cannot be decoded.
  virtual base::Variant Value() const = 0;
  /// The text that names the value, else the value as text; "" without a value.
  virtual std::string Text() const = 0;
  /// "" when the item has no unit.
  virtual std::string Unit() const = 0;
  /// Raise 2011 for a read-only item (before the value is looked at), 2012 for a value the item refuses.
  virtual void SetValue(const base::Variant& value) = 0;
  virtual void SetText(const std::string& text) = 0;
  /// The request whose execution brings or sends this item; null once the session is gone.
  virtual std::shared_ptr<viator3::Request> OwningRequest() const = 0;
};

/// The values of some items of one request's answer, as they go to a client: made ready once, read again and
/// again.
class Singles : public Versioned {
 public:
  explicit Singles(int version = kVersion) : Versioned(version) {}
  /// Appends each value in their order: 4 bytes, an IEEE single with its high byte first, or FF 00 00 00
  /// where there is none.
  virtual void AppendTo(base::ByteBuffer& reply) const = 0;
};

/// One diagnostic request of an ECU function.
class Request : public Versioned {
 public:
  using Items = std::vector<std::shared_ptr<DataItem>>;

  explicit Request(int version = kVersion) : Versioned(version) {}
  virtual const std::string& Name() const = 0;
  /// Sends the request and fills the items of its answer. Initialises the ECU first when need be.
  virtual base::Task<void> Execute() = 0;
  /// The items of the answer, then those of the request.
  virtual const Items& Data() const = 0;
  /// The items of the request.
  virtual const Items& Parameters() const = 0;
  /// The values of `items`, which are of this request's answer. Null when they are to be asked one by one.
  virtual std::unique_ptr<Singles> SinglesOf(std::span<const std::shared_ptr<DataItem>> /*items*/) const {
    return nullptr;
  }
};

/// A request as it went to an ECU, and what came back.
struct Exchange {
  base::ByteBuffer request;
  base::ByteBuffer answer;               ///< empty when there was none
  std::optional<base::Failure> failure;  ///< what was wrong, if anything
};

/// A diagnostic trouble code.
struct TroubleCode {
  std::uint32_t code = 0;
  int code_bytes = 2;  ///< that the code has in the protocol: 2 or 3
  std::uint8_t status = 0;
};

/// Follows the reading of trouble codes.
class TroubleCodeListener {
 public:
  virtual ~TroubleCodeListener() = default;
  /// After every exchange; a failed one is the last.
  virtual void Exchanged(const Exchange& exchange) = 0;
  /// How many codes will come, before the first.
  virtual void Counted(std::int32_t count) = 0;
  /// `index` counts from 1.
  virtual void Read(std::int32_t index, const TroubleCode& code) = 0;
};

/// What an ECU function can do.
struct Features {
  bool initialisation = true;    ///< there is an ECU behind it, which can be initialised
  bool identification = false;   ///< it tells who it is
  bool needs_messaging = false;  ///< it cannot be reached before CAN messaging was loaded
};

/// An ECU function: the ECU object of the diagnosis object, enumerable over its requests.
class Ecu : public Versioned {
 public:
  using Requests = std::vector<std::shared_ptr<Request>>;

  explicit Ecu(int version = kVersion) : Versioned(version) {}
  /// The function's name, for example "ENGINE"; "CAN" for the CAN messaging.
  virtual const std::string& Function() const = 0;
  /// The name shown to people.
  virtual const std::string& Name() const = 0;
  /// The protocol's name, which is only displayed.
  virtual const std::string& Protocol() const = 0;
  virtual viator3::Features Features() const = 0;

  virtual bool Initialised() const = 0;
  virtual base::Task<void> Initialise() = 0;
  /// Initialises anew, whatever the state.
  virtual base::Task<void> Reinitialise() = 0;
  /// Sends `request` and fills `answer`, initialising first when need be. A negative answer fills
  /// `answer` too and raises 2001, whose text names the service and the response code.
  virtual base::Task<void> Send(const base::ByteBuffer& request, base::ByteBuffer& answer) = 0;

  /// In the order of the ECU file.
  virtual const Requests& RequestList() = 0;
  /// Names of the reference data, in the order of the ECU file.
  virtual const std::vector<std::string>& ReferenceData() = 0;
  /// The answer's item of that name, case-sensitive, the first in the file; null when there is none.
  virtual std::shared_ptr<DataItem> FindAnswerItem(const std::string& name) = 0;
  /// Gives the function "CAN" its messaging file (full path). Raises Failure when it cannot be read.
  virtual base::Task<void> LoadMessaging(std::string path) = 0;

  /// Reads all trouble codes that are stored. Raises what the last exchange raised, or 2002 when an answer
  /// ends too soon.
  virtual base::Task<void> ReadTroubleCodes(TroubleCodeListener& listener) = 0;
  /// Asks the ECU who it is; the ECU is initialised. Raises nothing: the exchange says what was wrong.
  virtual base::Task<Exchange> ReadIdentification() = 0;
};

/// The scriptable object of one selected description file: its ECU's values by name.
class InstanceObject : public Versioned {
 public:
  /// Turns a short name into the data item's name; "" for a name that is no short name. It is asked first: a
  /// short name that is another data item's name too stands for the item that the description file says.
  using NameResolver = std::function<std::string(const std::string&)>;

  explicit InstanceObject(int version = kVersion) : Versioned(version) {}
  virtual void SetProtocol(std::shared_ptr<Ecu> ecu) = 0;
  virtual void SetNameResolver(NameResolver resolver) = 0;
  /// Executes the request that returns the item. Raises 2010 for an unknown name.
  virtual base::Task<base::Variant> Get(std::string name) = 0;
  /// Fills the item of a request and executes it. Raises 2010, 2011 or 2012.
  virtual base::Task<void> Set(std::string name, base::Variant value) = 0;
};

/// What a file that describes an ECU offers to the description files that name it.
class EcuFile : public Versioned {
 public:
  using Names = std::unordered_set<std::string_view>;

  explicit EcuFile(int version = kVersion) : Versioned(version) {}
  /// Full path.
  virtual const std::string& Path() const = 0;
  /// "" when the file names no function.
  virtual const std::string& Function() const = 0;
  /// Those of `names` that are items of an answer which description files may name.
  virtual Names Offered(const Names& names) const = 0;
};

/// A CAN frame as a client writes it.
struct CanFrame {
  std::int32_t identifier = 0;  ///< above 7FF hexadecimal, or negative: of 29 bits
  std::string data;             ///< two hexadecimal digits a byte, unchecked
};

/// The diagnosis object.
class Session : public Versioned {
 public:
  explicit Session(int version = kVersion) : Versioned(version) {}
  /// The port of the diagnostic interface. Writing a port opens the link on it (raises 1001 or 1002);
  /// writing "" releases it.
  virtual std::string Port() const = 0;
  virtual base::Task<void> SetPort(std::string port) = 0;
  /// Ends the session: waits that are under way end with Failure 1000. What still has to go out goes by
  /// itself.
  virtual base::Task<void> Close() = 0;

  virtual void SetLanguage(const std::string& language) = 0;
  /// Full path of the table of error texts.
  virtual void SetErrorsFile(const std::string& path) = 0;

  /// Reads a file that describes an ECU (full path); one that has not changed since it was read last, and is
  /// still in use, is the same object again. Raises Failure when it cannot be read.
  virtual std::shared_ptr<const EcuFile> ReadEcuFile(const std::string& path) = 0;
  /// Tells the session of a file that was selected: from now on it serves its function.
  virtual void OfferEcuFile(const std::shared_ptr<const EcuFile>& file) = 0;
  /// Raises 2020 when no ECU file has the function. The function "CAN" is always there.
  virtual std::shared_ptr<Ecu> EcuByFunction(const std::string& function) = 0;
  /// Every ECU object in use, in the order of first use.
  virtual std::vector<std::shared_ptr<Ecu>> Ecus() const = 0;
  virtual bool MessagingLoaded() const = 0;

  /// Sends CAN frames in their order. Raises 2012, and then sends none, for an identifier or data that cannot
  /// be; `frames` outlive the task.
  virtual base::Task<void> SendFrames(std::span<const CanFrame> frames) = 0;
  /// Creates an instance object by its programmatic identifier, "qor4inst." and a section's name.
  virtual std::shared_ptr<InstanceObject> CreateInstance(const std::string& prog_id) = 0;
};

}  // namespace korval::viator3
