// TLS with our own server; Wine's own TLS cannot speak with it.
#include <QFile>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTcpSocket>

#include "platform/qt/QtNetwork.h"
#include "tests/platform/NetworkContract.h"
#include "tests/qt/QtFixture.h"

namespace zeb {
namespace {

// A server with the certificate in tests/qt/certificates: self-signed, for "localhost".
struct TlsTest : QtFixture {
  QtNetwork network{loop};
  QSslServer server;
  std::string received;

  static std::string Folder() { return std::string(ZEB_TEST_DATA) + "/qt/certificates/"; }
  static QByteArray Contents(const std::string& name) {
    QFile file(QString::fromStdString(Folder() + name));
    EXPECT_TRUE(file.open(QFile::ReadOnly)) << name;
    return file.readAll();
  }

  void SetUp() override {
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(Contents("localhost.pem")));
    configuration.setPrivateKey(QSslKey(Contents("localhost.key"), QSsl::Ec));
    server.setSslConfiguration(configuration);
    ASSERT_TRUE(server.listen(QHostAddress::Any));
    QObject::connect(&server, &QTcpServer::pendingConnectionAvailable, &server, [this] {
      QTcpSocket* peer = server.nextPendingConnection();
      QObject::connect(peer, &QTcpSocket::readyRead, peer, [this, peer] {
        received += peer->readAll().toStdString();
        peer->write("answer");
        peer->disconnectFromHost();
      });
    });
  }
};

TEST_F(TlsTest, ACertificateThatNobodyVouchesForIsRefused) {
  RecordingClient client(network);
  client.control->ConnectTls("localhost", server.serverPort());
  ASSERT_TRUE(Until([&] { return client.closed == 1; }));
  EXPECT_EQ(client.connected, 0);
  EXPECT_EQ(client.control->CurrentState(), TcpClientControl::kError);
  EXPECT_NE(client.control->LastError().find("self-signed"), std::string::npos)
      << client.control->LastError();
}

TEST_F(TlsTest, ACertificateOfAnAddedAuthorityIsTrustedForItsHost) {
  ASSERT_TRUE(network.AddCaFile(Folder() + "localhost.pem"));
  RecordingClient client(network);
  client.control->ConnectTls("localhost", server.serverPort());
  ASSERT_TRUE(Until([&] { return client.connected == 1; })) << client.control->LastError();
  client.control->SendData("question");
  ASSERT_TRUE(Until([&] { return client.closed == 1; }));
  EXPECT_EQ(received, "question");
  EXPECT_EQ(client.received, "answer");
  EXPECT_EQ(client.control->LastError(), "");
}

TEST_F(TlsTest, ACertificateForAnotherHostIsRefused) {
  ASSERT_TRUE(network.AddCaFile(Folder() + "localhost.pem"));
  RecordingClient client(network);
  client.control->ConnectTls("127.0.0.1", server.serverPort());
  ASSERT_TRUE(Until([&] { return client.closed == 1; }));
  EXPECT_EQ(client.connected, 0);
  EXPECT_EQ(client.control->CurrentState(), TcpClientControl::kError);
}

TEST_F(TlsTest, AFileWithoutCertificatesIsAnError) {
  EXPECT_FALSE(network.AddCaFile(Folder() + "localhost.key"));
  EXPECT_FALSE(network.AddCaFile("/nowhere/ca.pem"));
}

}  // namespace
}  // namespace zeb
