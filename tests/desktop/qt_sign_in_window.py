"""A Qt 5 window with a name, and a password in each of the ways in which Qt hides one, the one that shows it in use."""

from PyQt5.QtWidgets import QApplication, QComboBox, QFormLayout, QLineEdit, QWidget

application = QApplication(["qt-sign-in"])
window = QWidget(windowTitle="Sign in")
form = QFormLayout(window)
form.addRow("Name", QLineEdit("alice"))
for mode in (QLineEdit.PasswordEchoOnEdit, QLineEdit.Password, QLineEdit.NoEcho):
    form.addRow("Password", QLineEdit("correct horse", echoMode=mode))
history = QComboBox(editable=True)
history.setEditText("correct horse")
history.lineEdit().setEchoMode(QLineEdit.Password)
form.addRow("Earlier", history)
window.show()
application.exec()
