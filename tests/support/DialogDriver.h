#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <deque>
#include <functional>
#include <iosfwd>
#include <vector>

namespace quarl::testing {

/// What a message box showed.
struct ShownBox {
  QString kind;  ///< the box's accessible description: "message", "critical", "warning", "question", "information"
  QString title;
  QString text;
  bool operator==(const ShownBox&) const = default;
};
std::ostream& operator<<(std::ostream& out, const ShownBox& box);

/// Answers the modal dialogs that an act brings up, as a user would, in the order in which they are expected:
///   DialogDriver dialogs;
///   dialogs.ExpectBox({"critical", "Stop", "Remove group failed!"}, "OKButton");
///   action->trigger();
///   dialogs.Verify();
/// A dialog that nobody expects fails the test and is closed; so is one that stays after its answer. Verify() (the
/// destructor does it too) fails for expected dialogs that did not come. It never waits for a dialog, so a test
/// cannot hang in it.
class DialogDriver {
 public:
  using Act = std::function<void(QWidget& dialog)>;

  DialogDriver();
  ~DialogDriver();
  DialogDriver(const DialogDriver&) = delete;
  DialogDriver& operator=(const DialogDriver&) = delete;

  /// The next dialog is the one of this object name; the act answers it and must leave it closed or closing.
  void Expect(const QString& objectName, Act act);
  /// The next dialog is a message box that shows this; the named button is clicked.
  void ExpectBox(const ShownBox& box, const QString& button = QStringLiteral("OKButton"));
  /// The same for any texts; they are in Boxes() afterwards.
  void ExpectAnyBox(const QString& button = QStringLiteral("OKButton"));
  /// The same for the message of an error whose text ends so, with its tag.
  void ExpectError(const QString& end);
  /// Every message box that came, in order.
  const std::vector<ShownBox>& Boxes() const { return boxes_; }
  /// Fails the test when an expected dialog has not come.
  void Verify();

  /// An act that clicks a button by its object name.
  static Act Click(const QString& button);

 private:
  struct Expected {
    QString description;
    std::function<bool(QWidget&)> fits;
    Act act;
  };

  void Arm();
  void Look();
  void Answer(QWidget& dialog);
  void CloseIfStuck(QWidget& dialog);

  QObject context_;
  std::deque<Expected> expected_;
  std::vector<ShownBox> boxes_;
  std::vector<QPointer<QWidget>> answered_;
  QElapsedTimer sinceAnswer_;
};

}  // namespace quarl::testing
