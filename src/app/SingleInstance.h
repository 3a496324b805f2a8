#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

class QLocalServer;

// Keeps Tessary to one window per user and store. The first start listens on a local socket
// named after the user and the store file; a later start connects to it, hands over the files
// it was given (as if opened with the running window) and exits, so that two programs never
// fight over one store. A socket left behind by a program that died is removed and taken over.
//
// The exchange is one line of JSON (an array of absolute paths) from the new start, answered by
// "ok" once the running window has taken the files.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    explicit SingleInstance(QString serverName, QObject *parent = nullptr);
    ~SingleInstance() override;

    // The socket of the user's Tessary for the store at storePath: a file in the user's runtime
    // folder, one per store, so that a test's or script's store has its own window.
    static QString serverNameForStore(const QString &storePath);

    QString serverName() const { return m_serverName; }

    // Hands the files to a running instance; true when one answered that it took them (the
    // caller then exits). False at once when nothing listens.
    bool sendToRunningInstance(const QStringList &files, int timeoutMs = 3000);
    // Starts answering later starts, replacing a stale socket. False when the socket cannot be
    // made (the program then simply runs alone).
    bool listen();
    bool isListening() const;

signals:
    // A later start handed these files over (absolute paths; possibly none: just come forward).
    void filesReceived(const QStringList &files);

private:
    void acceptConnection();

    QString m_serverName;
    QLocalServer *m_server = nullptr;
};
