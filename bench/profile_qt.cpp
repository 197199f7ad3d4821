// Qt's settings in an initialisation file.
#include <QSettings>
#include <QString>

#include "bench/profile_peer.h"

namespace {

class QtPeer : public kor::bench::ProfilePeer {
  public:
    explicit QtPeer(const std::string& file)
        : file_(QString::fromStdString(file)), key_(QString::fromLatin1("Section50/Key50")) {}

    double read(int count) override {
        for (int i = 0; i < count; ++i) {
            const QSettings settings(file_, QSettings::IniFormat);
            if (settings.value(key_).toString().isEmpty()) std::abort();
        }
        return 0;
    }
    void write(const char*) override {}

  private:
    const QString file_;
    const QString key_;
};

}  // namespace

std::unique_ptr<kor::bench::ProfilePeer> kor::bench::makeQtPeer(const std::string& file, std::string&) {
    return std::make_unique<QtPeer>(file);
}
