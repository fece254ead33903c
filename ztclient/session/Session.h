#pragma once

#include <optional>
#include <ostream>
#include <string>

#include "tovin/BaseString.h"
#include "tovin/Ptr.h"
#include "tovin/iNode.h"
#include "ztbaseclient/wsdl/CWsdlParser.h"
#include "ztclient/answers/Json.h"
#include "ztclient/session/UploadServer.h"

/// A client's whole session with the server, from its credentials to a result that is compared: each step
/// prints what it produced, and the steps behind it work with that.
///
///     Session session(std::cout, "", "");
///     session.run();
///
/// - Errors: those of the library; a step whose product does not come back as it was fails with "… do not
///   agree".
class Session {
 public:
  /// \param wsdl a file, "-" for standard input; empty for the bundled document.
  /// \param server scheme, host and port; empty for a server that the session starts.
  Session(std::ostream& out, const std::string& wsdl, const std::string& server);

  void run();

 private:
  void introduce() const;
  void begin(const char* title);
  void line(const std::string& label, const std::string& text) const;

  void login();
  void findEndPoint();
  void readService();
  void shipParameters();
  void buildLink();
  void upload();
  void askCache();
  void compareResult();

  void load(CWsdlParser& parser) const;
  Json describeService() const;
  void showReceived(const UploadServer::Received& received);
  void showComparison(const std::string& label, const std::string& reference, int tolerance) const;
  std::string startServer();

  std::ostream& out_;
  std::string wsdl_;
  // Before server_, which it may give its address.
  std::optional<UploadServer> ownServer_;
  std::string server_;
  int step_ = 0;
  tovin::WideString credentials_;
  Json operation_;
  tovin::Ptr<tovin::iNode> job_;
  std::string result_;
};
