// SPDX-License-Identifier: MIT
// What a diagnostic-session library must offer. The server drives ECUs through these classes alone; a
// host application may hand in a session of its own. Everything runs on the server's one thread; an
// operation that talks to an ECU may keep the event loop running while it waits, so a session can be
// closed from inside a wait. It then ends the wait, and the waiting operation raises Failure 1000.
//
// Every failure is a base::Failure with one of these numbers:
//   1000 link lost or session closed      1001 no interface configured   1002 interface cannot be opened
//   1015 CAN network error                2000 no answer                 2001 negative answer
//   2002 answer too short                 2003 answer to another request 2010 unknown name
//   2011 read only                        2012 value refused             2020 no ECU file for the function
//   2042 initialisation refused or lost   2045 ECU ended communication   2046 tester present unanswered
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/ByteBuffer.h"
#include "base/Variant.h"
#include "base/XmlFile.h"

namespace korval::viator3 {

class Request;

/// One value in an ECU's answer (read only) or in a request sent to it (writable).
class DataItem {
 public:
  virtual ~DataItem() = default;
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

/// One diagnostic request of an ECU function.
class Request {
 public:
  using Items = std::vector<std::shared_ptr<DataItem>>;

  virtual ~Request() = default;
  virtual const std::string& Name() const = 0;
  /// Sends the request and fills the items of its answer. Initialises the ECU first when need be.
  virtual void Execute() = 0;
  /// The items of the answer, then those of the request.
  virtual const Items& Data() const = 0;
  /// The items of the request.
  virtual const Items& Parameters() const = 0;
};

/// An ECU function: the ECU object of the diagnosis object, enumerable over its requests.
class Ecu {
 public:
  using Requests = std::vector<std::shared_ptr<Request>>;

  virtual ~Ecu() = default;
  /// The function's name, for example "ENGINE"; "CAN" for the CAN messaging.
  virtual const std::string& Function() const = 0;
  /// The name shown to people.
  virtual const std::string& Name() const = 0;
  /// "KWP2000", "DiagOnCAN", or another protocol that is only displayed.
  virtual const std::string& Protocol() const = 0;

  virtual bool Initialised() const = 0;
  virtual void Initialise() = 0;
  /// Initialises anew, whatever the state.
  virtual void Reinitialise() = 0;
  /// Sends `request` and fills `answer`, initialising first when need be. A negative answer fills
  /// `answer` too and raises 2001, whose text names the service and the response code.
  virtual void Send(const base::ByteBuffer& request, base::ByteBuffer& answer) = 0;

  /// In the order of the ECU file.
  virtual const Requests& RequestList() = 0;
  /// Names of the reference data, in the order of the ECU file.
  virtual const std::vector<std::string>& ReferenceData() = 0;
  /// The answer's item of that name, case-sensitive, the first in the file; null when there is none.
  virtual std::shared_ptr<DataItem> FindAnswerItem(const std::string& name) = 0;
  /// Gives the function "CAN" its messaging file (full path). Raises Failure when it cannot be read.
  virtual void LoadMessaging(const std::string& path) = 0;
};

/// The scriptable object of one selected description file: its ECU's values by name.
class InstanceObject {
 public:
  /// Turns a short name into the data item's name; "" for a name that is no short name. It is asked first: a
  /// short name that is another data item's name too stands for the item that the description file says.
  using NameResolver = std::function<std::string(const std::string&)>;

  virtual ~InstanceObject() = default;
  virtual void SetProtocol(std::shared_ptr<Ecu> ecu) = 0;
  virtual void SetNameResolver(NameResolver resolver) = 0;
  /// Executes the request that returns the item. Raises 2010 for an unknown name.
  virtual base::Variant Get(const std::string& name) = 0;
  /// Fills the item of a request and executes it. Raises 2010, 2011 or 2012.
  virtual void Set(const std::string& name, const base::Variant& value) = 0;
};

/// The diagnosis object.
class Session {
 public:
  virtual ~Session() = default;
  /// The port of the diagnostic interface. Writing a port opens the link on it (raises 1001 or 1002);
  /// writing "" releases it.
  virtual std::string Port() const = 0;
  virtual void SetPort(const std::string& port) = 0;
  /// Ends the session: waits that are under way end with Failure 1000.
  virtual void Close() = 0;

  virtual void SetLanguage(const std::string& language) = 0;
  /// Full path of the table of error texts.
  virtual void SetErrorsFile(const std::string& path) = 0;

  /// Tells the session of an ECU file that was selected; the parsed document spares it a second parse.
  virtual void OfferEcuFile(const std::string& path, base::XmlDocument document) = 0;
  /// Raises 2020 when no ECU file has the function. The function "CAN" is always there.
  virtual std::shared_ptr<Ecu> EcuByFunction(const std::string& function) = 0;
  /// Every ECU object in use, in the order of first use.
  virtual std::vector<std::shared_ptr<Ecu>> Ecus() const = 0;
  virtual bool MessagingLoaded() const = 0;

  /// Sends the CAN frames of a "can" document: under each "x" element, pairs of an "i" (identifier in
  /// signed decimal) and an "s" with a "d" (data in hexadecimal). May add to the document.
  virtual void SendFrames(pugi::xml_document& frames) = 0;
  /// Creates an instance object by its programmatic identifier, "qor4inst." and a section's name.
  virtual std::shared_ptr<InstanceObject> CreateInstance(const std::string& prog_id) = 0;
};

}  // namespace korval::viator3
