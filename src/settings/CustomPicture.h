#pragma once

#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>

#include <functional>
#include <memory>

namespace kelp {

/// The user's own picture, as the preferences name it, for as long as it is needed. It is decoded on another thread.
class CustomPicture final : public QObject
{
    Q_OBJECT

public:
    /// Larger pictures are scaled down to cover this many pixels.
    static constexpr QSize enough{2880, 1800};

    using QObject::QObject;

    /// Reads the file at `path`, unless that was done before. Empty = no picture.
    void load(const QString &path);
    /// Forgets the picture, and that it was read.
    void drop();

    /// Null while there is none.
    [[nodiscard]] const QImage &image() const { return m_image; }
    /// Whether there is a picture: that is known once it is read, and hoped until then.
    [[nodiscard]] bool exists() const { return m_isReading || !m_image.isNull(); }

    /// Reads any picture and then calls `done` with it, unless `context` is destroyed before.
    static void read(const QString &path, QObject *context, std::function<void(const QImage &)> done);

Q_SIGNALS:
    void changed();

private:
    QString m_path;
    QImage m_image;
    bool m_isReading = false;
    std::unique_ptr<QObject> m_reading; ///< context of what is being read
};

} // namespace kelp
