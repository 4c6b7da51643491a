#pragma once

#include <QString>
#include <QTemporaryDir>

// Gives a test its own settings, data, runtime and home folders, so nothing a
// test writes reaches the user's real ones. Construct it first in
// initTestCase() (or at the top of a test); it stays in force for its life.
class Sandbox
{
public:
    Sandbox();
    ~Sandbox();

    QString path(const QString &relative) const { return m_dir.filePath(relative); }
    QString home() const { return path("home"); }
    QString config() const { return path("config"); }

private:
    QTemporaryDir m_dir;
    QByteArray m_saved[5];
};
