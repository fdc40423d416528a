<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>QRVWindow::ApplyProgress</name>
    <message numerus="yes">
        <source>Nothing is lost: %n settings are still pending.</source>
        <translation>
            <numerusform>Nothing is lost: %n setting is still pending.</numerusform>
            <numerusform>Nothing is lost: %n settings are still pending.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Applied %n settings.</source>
        <translation>
            <numerusform>Applied %n setting.</numerusform>
            <numerusform>Applied %n settings.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::ChangesPane</name>
    <message numerus="yes">
        <source>%n changes.</source>
        <translation>
            <numerusform>%n change.</numerusform>
            <numerusform>%n changes.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n new while paused.</source>
        <translation>
            <numerusform>%n new while paused.</numerusform>
            <numerusform>%n new while paused.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::CompareDialog</name>
    <message numerus="yes">
        <source>%n differences.</source>
        <translation>
            <numerusform>%n difference.</numerusform>
            <numerusform>%n differences.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::CopyToProfileDialog</name>
    <message numerus="yes">
        <source>%n settings become pending edits of the profile.</source>
        <translation>
            <numerusform>%n setting becomes a pending edit of the profile.</numerusform>
            <numerusform>%n settings become pending edits of the profile.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::DetailsPane</name>
    <message numerus="yes">
        <source>%n settings</source>
        <translation>
            <numerusform>%n setting</numerusform>
            <numerusform>%n settings</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::EditDialog</name>
    <message numerus="yes">
        <source>Set %n settings to one value</source>
        <translation>
            <numerusform>Set %n setting to one value</numerusform>
            <numerusform>Set %n settings to one value</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n settings get this value:</source>
        <translation>
            <numerusform>%n setting gets this value:</numerusform>
            <numerusform>%n settings get this value:</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Edit of %n settings</source>
        <translation>
            <numerusform>Edit of %n setting</numerusform>
            <numerusform>Edit of %n settings</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::ExportDialog</name>
    <message numerus="yes">
        <source>The %n selected settings</source>
        <translation>
            <numerusform>The selected setting</numerusform>
            <numerusform>The %n selected settings</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::FilterBar</name>
    <message numerus="yes">
        <source>%1 of %n settings</source>
        <translation>
            <numerusform>%1 of %n setting</numerusform>
            <numerusform>%1 of %n settings</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::HistoryDialog</name>
    <message numerus="yes">
        <source>%n settings were changed since. They stay as they are.</source>
        <translation>
            <numerusform>%n setting was changed since. It stays as it is.</numerusform>
            <numerusform>%n settings were changed since. They stay as they are.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::ImportDialog</name>
    <message numerus="yes">
        <source>%n settings stay as they are. Nothing is written: the changes become pending edits.</source>
        <translation>
            <numerusform>%n setting stays as it is. Nothing is written: the changes become pending edits.</numerusform>
            <numerusform>%n settings stay as they are. Nothing is written: the changes become pending edits.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::MainWindow</name>
    <message numerus="yes">
        <source>%n edits are pending and not in the settings file.</source>
        <translation>
            <numerusform>%n edit is pending and not in the settings file.</numerusform>
            <numerusform>%n edits are pending and not in the settings file.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::PendingBar</name>
    <message numerus="yes">
        <source>%n settings are pending.</source>
        <translation>
            <numerusform>%n setting is pending.</numerusform>
            <numerusform>%n settings are pending.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n conflicts: %1 and others were changed by another process since you edited them.</source>
        <translation>
            <numerusform>%n conflict: %1 was changed by another process since you edited it.</numerusform>
            <numerusform>%n conflicts: %1 and others were changed by another process since you edited them.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::ReviewDialog</name>
    <message numerus="yes">
        <source>%n conflicts are not settled: they stay pending. Keep your values or take theirs.</source>
        <translation>
            <numerusform>%n conflict is not settled: it stays pending. Keep your value or take theirs.</numerusform>
            <numerusform>%n conflicts are not settled: they stay pending. Keep your values or take theirs.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n settings are pending. One save brings those that are checked into the file.</source>
        <translation>
            <numerusform>%n setting is pending. One save brings it into the file if it is checked.</numerusform>
            <numerusform>%n settings are pending. One save brings those that are checked into the file.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::RowModel</name>
    <message numerus="yes">
        <source>%1, %n settings</source>
        <translation>
            <numerusform>%1, %n setting</numerusform>
            <numerusform>%1, %n settings</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::Session</name>
    <message numerus="yes">
        <source>Reset %n setting(s)</source>
        <translation>
            <numerusform>Reset %n setting</numerusform>
            <numerusform>Reset %n settings</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Discard %n edit(s)</source>
        <translation>
            <numerusform>Discard %n edit</numerusform>
            <numerusform>Discard %n edits</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Apply %n edit(s)</source>
        <translation>
            <numerusform>Apply %n edit</numerusform>
            <numerusform>Apply %n edits</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>QRVWindow::TroubleBanner</name>
    <message numerus="yes">
        <source>Show %n more</source>
        <translation>
            <numerusform>Show %n more</numerusform>
            <numerusform>Show %n more</numerusform>
        </translation>
    </message>
</context>
</TS>
