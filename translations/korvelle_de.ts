<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>ChangePassword</name>
    <message>
        <source>Change Password</source>
        <translation>Passwort ändern</translation>
    </message>
    <message>
        <source>Enter the current password, then the new one twice.</source>
        <translation>Geben Sie das aktuelle Passwort ein und dann zweimal das neue.</translation>
    </message>
    <message>
        <source>Old password:</source>
        <translation>Altes Passwort:</translation>
    </message>
    <message>
        <source>Current password</source>
        <translation>Aktuelles Passwort</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Ändern</translation>
    </message>
</context>
<context>
    <name>CreateImageWizard</name>
    <message>
        <source>New Disk Image</source>
        <translation>Neues Image</translation>
    </message>
    <message>
        <source>Name your Disk Image</source>
        <translation>Benennen Sie Ihr Image</translation>
    </message>
    <message>
        <source>Name:</source>
        <translation>Name:</translation>
    </message>
    <message>
        <source>Volume name</source>
        <translation>Name des Volumes</translation>
    </message>
    <message>
        <source>Size:</source>
        <translation>Größe:</translation>
    </message>
    <message>
        <source>Encryption:</source>
        <translation>Verschlüsselung:</translation>
    </message>
    <message>
        <source>AES-128 (faster)</source>
        <translation>AES-128 (schneller)</translation>
    </message>
    <message>
        <source>AES-256 (stronger)</source>
        <translation>AES-256 (stärker)</translation>
    </message>
    <message>
        <source>Encryption</source>
        <translation>Verschlüsselung</translation>
    </message>
    <message>
        <source>Both keep your data safe. AES-128 is a little faster; AES-256 has the larger key.</source>
        <translation>Beide schützen Ihre Daten. AES-128 ist etwas schneller, AES-256 hat den längeren Schlüssel.</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>The largest the image can grow to. It takes only as much space on your disk as its contents need, and you can resize it later.</source>
        <translation>Die Größe, bis zu der das Image wachsen kann. Es belegt auf Ihrem Laufwerk nur so viel Platz, wie sein Inhalt braucht, und Sie können die Größe später ändern.</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>The name the volume shows when it is mounted. It starts as the name of the file.</source>
        <translation>Der Name, den das Volume im eingehängten Zustand zeigt. Zu Beginn ist es der Name der Datei.</translation>
    </message>
    <message>
        <source>Choose a Password</source>
        <translation>Passwort wählen</translation>
    </message>
    <message>
        <source>Type the password twice. Nobody can open the image without it, and there is no way to recover it if you forget it.</source>
        <translation>Geben Sie das Passwort zweimal ein. Ohne es kann niemand das Image öffnen, und wenn Sie es vergessen, lässt es sich nicht wiederherstellen.</translation>
    </message>
    <message>
        <source>Creating your Disk Image</source>
        <translation>Ihr Image wird erstellt</translation>
    </message>
    <message>
        <source>Please wait while your disk image is being created and formatted.</source>
        <translation>Bitte warten Sie, während Ihr Image erstellt und formatiert wird.</translation>
    </message>
    <message>
        <source>Initializing</source>
        <translation>Vorbereiten</translation>
    </message>
    <message>
        <source>Creating</source>
        <translation>Erstellen</translation>
    </message>
    <message>
        <source>Formatting</source>
        <translation>Formatieren</translation>
    </message>
    <message>
        <source>Finishing</source>
        <translation>Abschließen</translation>
    </message>
    <message>
        <source>Disk Image Creation was Successful</source>
        <translation>Das Image wurde erfolgreich erstellt</translation>
    </message>
    <message>
        <source>Successful</source>
        <translation>Erfolgreich</translation>
    </message>
    <message>
        <source>Go Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
</context>
<context>
    <name>CreatePopover</name>
    <message>
        <source>Create Disk Image…</source>
        <translation>Image erstellen…</translation>
    </message>
    <message>
        <source>A new encrypted file that keeps your data safe wherever you put it.</source>
        <translation>Eine neue verschlüsselte Datei, die Ihre Daten schützt, wo immer Sie sie ablegen.</translation>
    </message>
    <message>
        <source>Encrypt Disk…</source>
        <translation>Laufwerk verschlüsseln…</translation>
    </message>
    <message>
        <source>Turn a partition into an encrypted volume, keeping what is on it.</source>
        <translation>Macht aus einer Partition ein verschlüsseltes Volume, ohne ihren Inhalt zu verlieren.</translation>
    </message>
    <message>
        <source>Mount Disk…</source>
        <translation>Laufwerk einhängen…</translation>
    </message>
    <message>
        <source>Unlock an encrypted disk that is connected but not mounted.</source>
        <translation>Entsperrt ein verschlüsseltes Laufwerk, das angeschlossen, aber nicht eingehängt ist.</translation>
    </message>
</context>
<context>
    <name>EncryptDiskWizard</name>
    <message>
        <source>Encrypt Disk</source>
        <translation>Laufwerk verschlüsseln</translation>
    </message>
    <message>
        <source>Choose a Partition</source>
        <translation>Partition wählen</translation>
    </message>
    <message>
        <source>Choose the partition to encrypt. Its data stays where it is and is encrypted in the background.</source>
        <translation>Wählen Sie die Partition, die verschlüsselt werden soll. Ihre Daten bleiben, wo sie sind, und werden im Hintergrund verschlüsselt.</translation>
    </message>
    <message>
        <source>Choose a Passphrase</source>
        <translation>Passphrase wählen</translation>
    </message>
    <message>
        <source>Type the passphrase twice. The partition cannot be unlocked without it, and there is no way to recover it if you forget it.</source>
        <translation>Geben Sie die Passphrase zweimal ein. Ohne sie lässt sich die Partition nicht entsperren, und wenn Sie sie vergessen, lässt sie sich nicht wiederherstellen.</translation>
    </message>
    <message>
        <source>Preparing the Partition</source>
        <translation>Die Partition wird vorbereitet</translation>
    </message>
    <message>
        <source>Please wait while the partition is prepared for encryption.</source>
        <translation>Bitte warten Sie, während die Partition für die Verschlüsselung vorbereitet wird.</translation>
    </message>
    <message>
        <source>Starting</source>
        <translation>Starten</translation>
    </message>
    <message>
        <source>Resizing</source>
        <translation>Größe ändern</translation>
    </message>
    <message>
        <source>Creating</source>
        <translation>Erstellen</translation>
    </message>
    <message>
        <source>Encrypting</source>
        <translation>Verschlüsseln</translation>
    </message>
    <message>
        <source>Preparing Disk for Encryption was Successful</source>
        <translation>Das Laufwerk wurde erfolgreich für die Verschlüsselung vorbereitet</translation>
    </message>
    <message>
        <source>Successful</source>
        <translation>Erfolgreich</translation>
    </message>
    <message>
        <source>Go Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
</context>
<context>
    <name>FavouriteMountViews</name>
    <message>
        <source>Mount Favorite</source>
        <translation>Favorit einhängen</translation>
    </message>
    <message>
        <source>Enter Password</source>
        <translation>Passwort eingeben</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Mount</source>
        <translation>Einhängen</translation>
    </message>
</context>
<context>
    <name>HelpPopovers</name>
    <message>
        <source>&lt;b&gt;Favorites and Mounted&lt;/b&gt;&lt;br&gt;Volumes that are open appear under Mounted. Drag a disk image here to keep it among your favorites, sorted into folders, and mount it again with a double-click.</source>
        <translation>&lt;b&gt;Favoriten und Eingehängt&lt;/b&gt;&lt;br&gt;Geöffnete Volumes erscheinen unter „Eingehängt“. Ziehen Sie ein Image hierher, um es in Ordnern unter Ihren Favoriten abzulegen und mit einem Doppelklick wieder einzuhängen.</translation>
    </message>
    <message>
        <source>&lt;b&gt;Commands&lt;/b&gt;&lt;br&gt;Change the password of the selected volume, erase its key, resize or compact a disk image, or decrypt a disk.</source>
        <translation>&lt;b&gt;Befehle&lt;/b&gt;&lt;br&gt;Ändern Sie das Passwort des ausgewählten Volumes, löschen Sie seinen Schlüssel, ändern Sie die Größe eines Images oder komprimieren Sie es, oder entschlüsseln Sie ein Laufwerk.</translation>
    </message>
    <message>
        <source>&lt;b&gt;Create&lt;/b&gt;&lt;br&gt;Make a new encrypted disk image, encrypt a disk, or unlock an encrypted disk.</source>
        <translation>&lt;b&gt;Erstellen&lt;/b&gt;&lt;br&gt;Erstellen Sie ein neues verschlüsseltes Image, verschlüsseln Sie ein Laufwerk oder entsperren Sie ein verschlüsseltes Laufwerk.</translation>
    </message>
    <message>
        <source>&lt;b&gt;Open a disk image&lt;/b&gt;&lt;br&gt;Drop an encrypted disk image here, or click to choose one, to mount it with its password.</source>
        <translation>&lt;b&gt;Image öffnen&lt;/b&gt;&lt;br&gt;Legen Sie ein verschlüsseltes Image hier ab oder klicken Sie, um eines auszuwählen, und hängen Sie es mit seinem Passwort ein.</translation>
    </message>
</context>
<context>
    <name>KVActionMenuView</name>
    <message>
        <source>Change Password</source>
        <translation>Passwort ändern</translation>
    </message>
    <message>
        <source>Erase Key</source>
        <translation>Schlüssel löschen</translation>
    </message>
    <message>
        <source>Resize</source>
        <translation>Größe ändern</translation>
    </message>
    <message>
        <source>Compact</source>
        <translation>Komprimieren</translation>
    </message>
    <message>
        <source>Decrypt</source>
        <translation>Entschlüsseln</translation>
    </message>
</context>
<context>
    <name>KVAppDelegate</name>
    <message>
        <source>Your settings cannot be saved</source>
        <translation>Ihre Einstellungen können nicht gespeichert werden</translation>
    </message>
    <message>
        <source>Korvelle cannot write its settings to %1. Changes to your favourites and preferences will be lost when Korvelle quits.</source>
        <translation>Korvelle kann seine Einstellungen nicht in %1 schreiben. Änderungen an Ihren Favoriten und Einstellungen gehen verloren, wenn Korvelle beendet wird.</translation>
    </message>
    <message>
        <source>Choose a Disk Image:</source>
        <translation>Wählen Sie ein Image:</translation>
    </message>
    <message>
        <source>Disk Images (*.dmg *.sparseimage *.sparsebundle)</source>
        <translation>Images (*.dmg *.sparseimage *.sparsebundle)</translation>
    </message>
</context>
<context>
    <name>KVBusyVolumeAlert</name>
    <message>
        <source>No process of yours has files open on this volume.</source>
        <translation>Keiner Ihrer Prozesse hat Dateien auf diesem Volume geöffnet.</translation>
    </message>
    <message>
        <source>Processes using the volume:</source>
        <translation>Prozesse, die das Volume verwenden:</translation>
    </message>
    <message>
        <source>Force Unmount</source>
        <translation>Aushängen erzwingen</translation>
    </message>
</context>
<context>
    <name>KVCommandAlert</name>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
</context>
<context>
    <name>KVCreateImageWizardController</name>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
</context>
<context>
    <name>KVDetailPaneView</name>
    <message>
        <source>Welcome to Korvelle</source>
        <translation>Willkommen bei Korvelle</translation>
    </message>
    <message>
        <source>Encrypted disk images and encrypted disks appear on the left once they are mounted. Choose one to see it here with its commands.</source>
        <translation>Verschlüsselte Images und verschlüsselte Laufwerke erscheinen links, sobald sie eingehängt sind. Wählen Sie eines aus, um es hier mit seinen Befehlen zu sehen.</translation>
    </message>
    <message>
        <source>To mount an encrypted disk image, drop it on the area at the bottom left or open it from the File menu. To make a new one, or to encrypt a disk, use the Create button in the toolbar.</source>
        <translation>Um ein verschlüsseltes Image einzuhängen, legen Sie es auf der Fläche unten links ab oder öffnen Sie es über das Menü „Datei“. Um ein neues zu erstellen oder ein Laufwerk zu verschlüsseln, verwenden Sie die Taste „Erstellen“ in der Werkzeugleiste.</translation>
    </message>
    <message>
        <source>No Volume Selected</source>
        <translation>Kein Volume ausgewählt</translation>
    </message>
    <message>
        <source>Double-click to rename</source>
        <translation>Zum Umbenennen doppelklicken</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Show in Files</source>
        <translation>In Dateien zeigen</translation>
    </message>
    <message>
        <source>More Info</source>
        <translation>Mehr Infos</translation>
    </message>
    <message>
        <source>Location:</source>
        <translation>Ort:</translation>
    </message>
    <message>
        <source>Status:</source>
        <translation>Status:</translation>
    </message>
    <message>
        <source>%1 used of %2, %3 free</source>
        <translation>%1 von %2 belegt, %3 frei</translation>
    </message>
    <message>
        <source>Kind:</source>
        <translation>Art:</translation>
    </message>
    <message>
        <source>Encrypted disk image</source>
        <translation>Verschlüsseltes Image</translation>
    </message>
    <message>
        <source>Encrypted disk</source>
        <translation>Verschlüsseltes Laufwerk</translation>
    </message>
    <message>
        <source>File system:</source>
        <translation>Dateisystem:</translation>
    </message>
    <message>
        <source>Device:</source>
        <translation>Gerät:</translation>
    </message>
    <message>
        <source>Volume UUID:</source>
        <translation>Volume-UUID:</translation>
    </message>
    <message>
        <source>Logical volume:</source>
        <translation>Logisches Volume:</translation>
    </message>
    <message>
        <source>Capacity:</source>
        <translation>Kapazität:</translation>
    </message>
    <message>
        <source>Available:</source>
        <translation>Verfügbar:</translation>
    </message>
    <message>
        <source>Used:</source>
        <translation>Belegt:</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>Access:</source>
        <translation>Zugriff:</translation>
    </message>
    <message>
        <source>Read only</source>
        <translation>Nur lesen</translation>
    </message>
    <message>
        <source>Read and write</source>
        <translation>Lesen und schreiben</translation>
    </message>
</context>
<context>
    <name>KVDiskListWizard</name>
    <message>
        <source>The disks cannot be listed</source>
        <translation>Die Laufwerke können nicht aufgelistet werden</translation>
    </message>
    <message>
        <source>Korvelle cannot reach its disk tools.</source>
        <translation>Korvelle kann seine Laufwerkswerkzeuge nicht erreichen.</translation>
    </message>
</context>
<context>
    <name>KVEncryptDiskWizardController</name>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>Disk</source>
        <translation>Laufwerk</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Korvelle cannot reach its disk tools.</source>
        <translation>Korvelle kann seine Laufwerkswerkzeuge nicht erreichen.</translation>
    </message>
</context>
<context>
    <name>KVFavouriteMountViewsController</name>
    <message>
        <source>Enter Password for %1</source>
        <translation>Passwort für %1 eingeben</translation>
    </message>
</context>
<context>
    <name>KVFavouritesController</name>
    <message>
        <source>Untitled %1</source>
        <translation>Unbenannt %1</translation>
    </message>
</context>
<context>
    <name>KVHelpBrowser</name>
    <message>
        <source>Korvelle Help</source>
        <translation>Korvelle-Hilfe</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
</context>
<context>
    <name>KVMainToolBar</name>
    <message>
        <source>Volume</source>
        <translation>Volume</translation>
    </message>
    <message>
        <source>Create</source>
        <translation>Erstellen</translation>
    </message>
    <message>
        <source>Create a disk image, encrypt a disk or mount a disk</source>
        <translation>Ein Image erstellen, ein Laufwerk verschlüsseln oder ein Laufwerk einhängen</translation>
    </message>
    <message>
        <source>Add to Favorites</source>
        <translation>Zu Favoriten hinzufügen</translation>
    </message>
</context>
<context>
    <name>KVMainWindow</name>
    <message>
        <source>About Korvelle</source>
        <translation>Über Korvelle</translation>
    </message>
    <message>
        <source>&lt;h3&gt;Korvelle %1&lt;/h3&gt;</source>
        <translation>&lt;h3&gt;Korvelle %1&lt;/h3&gt;</translation>
    </message>
    <message>
        <source>Encrypted disk images and encrypted disks, without a terminal.</source>
        <translation>Verschlüsselte Images und verschlüsselte Laufwerke, ohne Terminal.</translation>
    </message>
    <message>
        <source>Drop a disk image to mount it</source>
        <translation>Image zum Einhängen hier ablegen</translation>
    </message>
    <message>
        <source>Open Disk Image…</source>
        <translation>Image öffnen…</translation>
    </message>
    <message>
        <source>sparseimage, sparsebundle or dmg</source>
        <translation>sparseimage, sparsebundle oder dmg</translation>
    </message>
    <message>
        <source>“%1”</source>
        <translation>„%1“</translation>
    </message>
    <message numerus="yes">
        <source>Quitting as soon as %1 can be unmounted…</source>
        <translation>
            <numerusform>Korvelle wird beendet, sobald %1 ausgehängt werden kann…</numerusform>
            <numerusform>Korvelle wird beendet, sobald %1 ausgehängt werden können…</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>KVMountDiskController</name>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>Locked</source>
        <translation>Gesperrt</translation>
    </message>
    <message>
        <source>Unlocked</source>
        <translation>Entsperrt</translation>
    </message>
</context>
<context>
    <name>KVMountImageSheet</name>
    <message>
        <source>Enter Password for %1</source>
        <translation>Passwort für %1 eingeben</translation>
    </message>
</context>
<context>
    <name>KVMountedCellView</name>
    <message>
        <source>%1 of %2 used</source>
        <translation>%1 von %2 belegt</translation>
    </message>
</context>
<context>
    <name>KVOutlineView</name>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
</context>
<context>
    <name>KVPasswordFieldView</name>
    <message>
        <source>Hide password</source>
        <translation>Passwort verbergen</translation>
    </message>
    <message>
        <source>Show password</source>
        <translation>Passwort zeigen</translation>
    </message>
</context>
<context>
    <name>KVPasswordStrengthMeterView</name>
    <message>
        <source>Password strength</source>
        <translation>Passwortstärke</translation>
    </message>
    <message>
        <source>Very weak</source>
        <translation>Sehr schwach</translation>
    </message>
    <message>
        <source>Weak</source>
        <translation>Schwach</translation>
    </message>
    <message>
        <source>Fair</source>
        <translation>Mittel</translation>
    </message>
    <message>
        <source>Good</source>
        <translation>Gut</translation>
    </message>
    <message>
        <source>Strong</source>
        <translation>Stark</translation>
    </message>
</context>
<context>
    <name>KVResizeController</name>
    <message>
        <source>New size: %1</source>
        <translation>Neue Größe: %1</translation>
    </message>
    <message>
        <source>The size limits of this Disk Image could not be read.</source>
        <translation>Die Größengrenzen dieses Images konnten nicht gelesen werden.</translation>
    </message>
    <message>
        <source>%1 used</source>
        <translation>%1 belegt</translation>
    </message>
    <message>
        <source>%1 free</source>
        <translation>%1 frei</translation>
    </message>
</context>
<context>
    <name>KVSidebarItemDelegate</name>
    <message>
        <source>Hide</source>
        <translation>Ausblenden</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Einblenden</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Drop a disk image below to mount it.</source>
        <translation>Legen Sie unten ein Image ab, um es einzuhängen.</translation>
    </message>
</context>
<context>
    <name>KVSidebarModel</name>
    <message>
        <source>Favorites</source>
        <translation>Favoriten</translation>
    </message>
    <message>
        <source>Mounted</source>
        <translation>Eingehängt</translation>
    </message>
    <message>
        <source>New Folder</source>
        <translation>Neuer Ordner</translation>
    </message>
    <message>
        <source>No volumes mounted</source>
        <translation>Keine Volumes eingehängt</translation>
    </message>
</context>
<context>
    <name>KVSlidingWizard</name>
    <message>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Create</source>
        <translation>Erstellen</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Encrypt</source>
        <translation>Verschlüsseln</translation>
    </message>
    <message>
        <source>Mount</source>
        <translation>Einhängen</translation>
    </message>
</context>
<context>
    <name>KVTaskLauncher</name>
    <message>
        <source>Choose Disk Image location:</source>
        <translation>Speicherort des Images wählen:</translation>
    </message>
    <message>
        <source>Disk images (*.sparseimage)</source>
        <translation>Images (*.sparseimage)</translation>
    </message>
</context>
<context>
    <name>KVVolumeCommands</name>
    <message>
        <source>This will render all the data in this Disk Image inaccessible.</source>
        <translation>Dadurch werden alle Daten in diesem Image unzugänglich.</translation>
    </message>
    <message>
        <source>Are you sure you want to continue?</source>
        <translation>Möchten Sie wirklich fortfahren?</translation>
    </message>
    <message>
        <source>Erase</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Enter the password</source>
        <translation>Passwort eingeben</translation>
    </message>
    <message>
        <source>Please enter the password for the Disk Image to continue the resize process.</source>
        <translation>Bitte geben Sie das Passwort des Images ein, um die Größenänderung fortzusetzen.</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>This will shrink the Disk Image file on your drive to the smallest possible size.</source>
        <translation>Dadurch wird die Image-Datei auf Ihrem Laufwerk so klein wie möglich.</translation>
    </message>
    <message>
        <source>Compact</source>
        <translation>Komprimieren</translation>
    </message>
    <message>
        <source>This will decrypt the data on this Disk.</source>
        <translation>Dadurch werden die Daten auf diesem Laufwerk entschlüsselt.</translation>
    </message>
    <message>
        <source>The data will be accessible without a password. Are you sure you want to continue?</source>
        <translation>Die Daten sind dann ohne Passwort zugänglich. Möchten Sie wirklich fortfahren?</translation>
    </message>
    <message>
        <source>Decrypt</source>
        <translation>Entschlüsseln</translation>
    </message>
</context>
<context>
    <name>KVWindowActions</name>
    <message>
        <source>&amp;New Disk Image…</source>
        <translation>&amp;Neues Image…</translation>
    </message>
    <message>
        <source>Ctrl+N</source>
        <translation>Ctrl+N</translation>
    </message>
    <message>
        <source>&amp;Open Disk Image…</source>
        <translation>Image ö&amp;ffnen…</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>&amp;Encrypt Disk…</source>
        <translation>Laufwerk &amp;verschlüsseln…</translation>
    </message>
    <message>
        <source>&amp;Mount Disk…</source>
        <translation>Laufwerk &amp;einhängen…</translation>
    </message>
    <message>
        <source>New Favorites &amp;Folder</source>
        <translation>Neuer Favoriten&amp;ordner</translation>
    </message>
    <message>
        <source>&amp;Preferences…</source>
        <translation>Ein&amp;stellungen…</translation>
    </message>
    <message>
        <source>Ctrl+,</source>
        <translation>Ctrl+,</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>&amp;Rename</source>
        <translation>&amp;Umbenennen</translation>
    </message>
    <message>
        <source>&amp;Show in Files</source>
        <translation>In &amp;Dateien zeigen</translation>
    </message>
    <message>
        <source>Add to &amp;Favorites</source>
        <translation>Zu &amp;Favoriten hinzufügen</translation>
    </message>
    <message>
        <source>&amp;Change Password…</source>
        <translation>&amp;Passwort ändern…</translation>
    </message>
    <message>
        <source>Erase &amp;Key…</source>
        <translation>&amp;Schlüssel löschen…</translation>
    </message>
    <message>
        <source>Re&amp;size…</source>
        <translation>&amp;Größe ändern…</translation>
    </message>
    <message>
        <source>Com&amp;pact…</source>
        <translation>&amp;Komprimieren…</translation>
    </message>
    <message>
        <source>&amp;Decrypt…</source>
        <translation>&amp;Entschlüsseln…</translation>
    </message>
    <message>
        <source>&amp;Unmount</source>
        <translation>Aus&amp;hängen</translation>
    </message>
    <message>
        <source>Ctrl+E</source>
        <translation>Ctrl+E</translation>
    </message>
    <message>
        <source>Unmount &amp;All</source>
        <translation>&amp;Alle aushängen</translation>
    </message>
    <message>
        <source>Ctrl+Shift+E</source>
        <translation>Ctrl+Shift+E</translation>
    </message>
    <message>
        <source>Show &amp;Tips</source>
        <translation>&amp;Tipps zeigen</translation>
    </message>
    <message>
        <source>Korvelle &amp;Help</source>
        <translation>Korvelle-&amp;Hilfe</translation>
    </message>
    <message>
        <source>How Your Data Is &amp;Encrypted</source>
        <translation>Wie Ihre Daten &amp;verschlüsselt werden</translation>
    </message>
    <message>
        <source>&amp;Troubleshooting</source>
        <translation>&amp;Fehlerbehebung</translation>
    </message>
    <message>
        <source>&amp;About Korvelle</source>
        <translation>Über &amp;Korvelle</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Volume</source>
        <translation>&amp;Volume</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
</context>
<context>
    <name>KVWizardProgressCirclesView</name>
    <message>
        <source>Wizard progress</source>
        <translation>Fortschritt des Assistenten</translation>
    </message>
    <message>
        <source>Step %1 of %2</source>
        <translation>Schritt %1 von %2</translation>
    </message>
</context>
<context>
    <name>Korvelle</name>
    <message>
        <source>hdiutil ended abnormally.</source>
        <translation>hdiutil wurde unerwartet beendet.</translation>
    </message>
    <message>
        <source>Encrypting Disk failed</source>
        <translation>Verschlüsseln des Laufwerks fehlgeschlagen</translation>
    </message>
    <message>
        <source>diskutil cs ended abnormally.</source>
        <translation>diskutil cs wurde unerwartet beendet.</translation>
    </message>
    <message>
        <source>Could not find disk</source>
        <translation>Laufwerk nicht gefunden</translation>
    </message>
    <message>
        <source>The given file system is not supported on Core Storage</source>
        <translation>Das angegebene Dateisystem wird von Core Storage nicht unterstützt</translation>
    </message>
    <message>
        <source>The target disk is already in use by Core Storage</source>
        <translation>Das Ziellaufwerk wird bereits von Core Storage verwendet</translation>
    </message>
    <message>
        <source>Wrong Password</source>
        <translation>Falsches Passwort</translation>
    </message>
    <message>
        <source>Disk doesn&apos;t exist</source>
        <translation>Das Laufwerk existiert nicht</translation>
    </message>
    <message>
        <source>The Disk is not locked</source>
        <translation>Das Laufwerk ist nicht gesperrt</translation>
    </message>
    <message>
        <source>Decrypting failed</source>
        <translation>Entschlüsseln fehlgeschlagen</translation>
    </message>
    <message>
        <source>diskutil ended abnormally.</source>
        <translation>diskutil wurde unerwartet beendet.</translation>
    </message>
    <message>
        <source>Unlocking Disk failed</source>
        <translation>Entsperren des Laufwerks fehlgeschlagen</translation>
    </message>
    <message>
        <source>Mounting Disk failed</source>
        <translation>Einhängen des Laufwerks fehlgeschlagen</translation>
    </message>
    <message>
        <source>diskutil mount ended abnormally.</source>
        <translation>diskutil mount wurde unerwartet beendet.</translation>
    </message>
    <message>
        <source>Unmounting (eject) Disk failed</source>
        <translation>Aushängen (Auswerfen) des Laufwerks fehlgeschlagen</translation>
    </message>
    <message>
        <source>Renaming Volume failed</source>
        <translation>Umbenennen des Volumes fehlgeschlagen</translation>
    </message>
    <message>
        <source>This is not a valid volume name</source>
        <translation>Dies ist kein gültiger Volume-Name</translation>
    </message>
    <message>
        <source>Changing password failed</source>
        <translation>Ändern des Passworts fehlgeschlagen</translation>
    </message>
    <message>
        <source>Error executing system_profiler command</source>
        <translation>Fehler beim Ausführen des Befehls system_profiler</translation>
    </message>
    <message>
        <source>system_profiler ended abnormally.</source>
        <translation>system_profiler wurde unerwartet beendet.</translation>
    </message>
    <message>
        <source>system_profiler output is not a property list.</source>
        <translation>Die Ausgabe von system_profiler ist keine Property-List.</translation>
    </message>
    <message>
        <source>Error diskutil info: Could not find disk</source>
        <translation>Fehler bei diskutil info: Laufwerk nicht gefunden</translation>
    </message>
    <message>
        <source>Error executing diskutil command</source>
        <translation>Fehler beim Ausführen des Befehls diskutil</translation>
    </message>
    <message>
        <source>diskutil output is not a property list.</source>
        <translation>Die Ausgabe von diskutil ist keine Property-List.</translation>
    </message>
    <message>
        <source>Unmount failed</source>
        <translation>Aushängen fehlgeschlagen</translation>
    </message>
    <message>
        <source>Volume has no mount point</source>
        <translation>Das Volume hat keinen Einhängepunkt</translation>
    </message>
    <message>
        <source>hdiutil output is not a property list.</source>
        <translation>Die Ausgabe von hdiutil ist keine Property-List.</translation>
    </message>
    <message>
        <source>Error executing hdiutil command</source>
        <translation>Fehler beim Ausführen des Befehls hdiutil</translation>
    </message>
    <message>
        <source>Mounting Disk Image failed</source>
        <translation>Einhängen des Images fehlgeschlagen</translation>
    </message>
    <message>
        <source>Disk Image doesn&apos;t exist</source>
        <translation>Das Image existiert nicht</translation>
    </message>
    <message>
        <source>Invalid Mount Path</source>
        <translation>Ungültiger Einhängepfad</translation>
    </message>
    <message>
        <source>Resource busy, Disk Image may already be mounted.</source>
        <translation>Ressource belegt, das Image ist möglicherweise bereits eingehängt.</translation>
    </message>
    <message>
        <source>Disk Volume point doesn&apos;t exist</source>
        <translation>Der Einhängepunkt des Volumes existiert nicht</translation>
    </message>
    <message>
        <source>Resource busy, Volume may still be used.</source>
        <translation>Ressource belegt, das Volume wird möglicherweise noch verwendet.</translation>
    </message>
    <message>
        <source>Disk Image creation failed</source>
        <translation>Erstellen des Images fehlgeschlagen</translation>
    </message>
    <message>
        <source>There is no path parameter</source>
        <translation>Es wurde kein Pfad angegeben</translation>
    </message>
    <message>
        <source>File or directory doesn&apos;t exist</source>
        <translation>Die Datei oder der Ordner existiert nicht</translation>
    </message>
    <message>
        <source>File already exists.</source>
        <translation>Die Datei existiert bereits.</translation>
    </message>
    <message>
        <source>Erasing Keys failed</source>
        <translation>Löschen der Schlüssel fehlgeschlagen</translation>
    </message>
    <message>
        <source>Acquiring limits information failed</source>
        <translation>Abfragen der Größengrenzen fehlgeschlagen</translation>
    </message>
    <message>
        <source>Resizing failed</source>
        <translation>Ändern der Größe fehlgeschlagen</translation>
    </message>
    <message>
        <source>Disk Image is mounted</source>
        <translation>Das Image ist eingehängt</translation>
    </message>
    <message>
        <source>Compact failed</source>
        <translation>Komprimieren fehlgeschlagen</translation>
    </message>
    <message>
        <source>The file couldn’t be opened.</source>
        <translation>Die Datei konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>The file “%1” couldn’t be opened because there is no such file.</source>
        <translation>Die Datei „%1“ konnte nicht geöffnet werden, da sie nicht existiert.</translation>
    </message>
    <message>
        <source>The reference to the file is damaged.</source>
        <translation>Der Verweis auf die Datei ist beschädigt.</translation>
    </message>
    <message>
        <source>The file “%1” couldn’t be opened: %2.</source>
        <translation>Die Datei „%1“ konnte nicht geöffnet werden: %2.</translation>
    </message>
    <message>
        <source>The data couldn’t be read because it isn’t in the correct format.</source>
        <translation>Die Daten konnten nicht gelesen werden, da sie nicht das richtige Format haben.</translation>
    </message>
    <message>
        <source>FileHandle error.</source>
        <translation>Fehler beim Dateizugriff.</translation>
    </message>
    <message>
        <source>%1 could not be started (%2).</source>
        <translation>%1 konnte nicht gestartet werden (%2).</translation>
    </message>
    <message>
        <source>Not a valid volume</source>
        <translation>Kein gültiges Volume</translation>
    </message>
    <message>
        <source>Disk Image Creation was Successful</source>
        <translation>Das Image wurde erfolgreich erstellt</translation>
    </message>
    <message>
        <source>Successful</source>
        <translation>Erfolgreich</translation>
    </message>
    <message>
        <source>Your Disk Image is now ready for use. Wasn&apos;t that hard, was it? It will be automatically mounted for you if you like to.</source>
        <translation>Ihr Image ist jetzt einsatzbereit. Gar nicht so schwer, oder? Wenn Sie möchten, wird es automatisch für Sie eingehängt.</translation>
    </message>
    <message>
        <source>The existing file “%1” couldn’t be removed.</source>
        <translation>Die vorhandene Datei „%1“ konnte nicht entfernt werden.</translation>
    </message>
    <message>
        <source>Korvelle cannot reach its disk image tool.</source>
        <translation>Korvelle kann sein Image-Werkzeug nicht erreichen.</translation>
    </message>
    <message>
        <source>Preparing Disk for Encryption was Successful</source>
        <translation>Das Laufwerk wurde erfolgreich für die Verschlüsselung vorbereitet</translation>
    </message>
    <message>
        <source>The Disk is now prepared for encrypting. The actual encrypting will be happening in the background. You can follow the progress in the “Mounted” list.</source>
        <translation>Das Laufwerk ist jetzt für die Verschlüsselung vorbereitet. Die eigentliche Verschlüsselung läuft im Hintergrund. Den Fortschritt können Sie in der Liste „Eingehängt“ verfolgen.</translation>
    </message>
    <message>
        <source>Encrypting failed</source>
        <translation>Verschlüsseln fehlgeschlagen</translation>
    </message>
    <message>
        <source>The program %1 is missing, so Korvelle cannot run it.</source>
        <translation>Das Programm %1 fehlt, daher kann Korvelle es nicht ausführen.</translation>
    </message>
</context>
<context>
    <name>MountDisk</name>
    <message>
        <source>Mount Disk</source>
        <translation>Laufwerk einhängen</translation>
    </message>
    <message>
        <source>Mount a Disk</source>
        <translation>Ein Laufwerk einhängen</translation>
    </message>
    <message>
        <source>Choose the volume to mount. A locked volume asks for its passphrase next.</source>
        <translation>Wählen Sie das Volume, das eingehängt werden soll. Ein gesperrtes Volume fragt danach nach seiner Passphrase.</translation>
    </message>
    <message>
        <source>Unlock the Volume</source>
        <translation>Volume entsperren</translation>
    </message>
    <message>
        <source>The volume is encrypted. Type its passphrase to unlock and mount it.</source>
        <translation>Das Volume ist verschlüsselt. Geben Sie seine Passphrase ein, um es zu entsperren und einzuhängen.</translation>
    </message>
    <message>
        <source>Passphrase:</source>
        <translation>Passphrase:</translation>
    </message>
    <message>
        <source>Passphrase</source>
        <translation>Passphrase</translation>
    </message>
    <message>
        <source>Go Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
</context>
<context>
    <name>MountImageSheet</name>
    <message>
        <source>Mount Disk Image</source>
        <translation>Image einhängen</translation>
    </message>
    <message>
        <source>Enter Password</source>
        <translation>Passwort eingeben</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Mount under this folder:</source>
        <translation>In diesem Ordner einhängen:</translation>
    </message>
    <message>
        <source>The usual place</source>
        <translation>Am üblichen Ort</translation>
    </message>
    <message>
        <source>Mount read-only</source>
        <translation>Schreibgeschützt einhängen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Mount</source>
        <translation>Einhängen</translation>
    </message>
</context>
<context>
    <name>NewPasswordForm</name>
    <message>
        <source>New password:</source>
        <translation>Neues Passwort:</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Verify:</source>
        <translation>Bestätigen:</translation>
    </message>
    <message>
        <source>Password again</source>
        <translation>Passwort wiederholen</translation>
    </message>
</context>
<context>
    <name>Preferences</name>
    <message>
        <source>Preferences</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Mounting</source>
        <translation>Einhängen</translation>
    </message>
    <message>
        <source>Open the volume in the file manager after mounting</source>
        <translation>Das Volume nach dem Einhängen in der Dateiverwaltung öffnen</translation>
    </message>
    <message>
        <source>Add mounted and created disk images to the recent documents</source>
        <translation>Eingehängte und erstellte Images zu den zuletzt verwendeten Dokumenten hinzufügen</translation>
    </message>
    <message>
        <source>Mount a disk image right after creating it</source>
        <translation>Ein Image gleich nach dem Erstellen einhängen</translation>
    </message>
    <message>
        <source>Unmounting</source>
        <translation>Aushängen</translation>
    </message>
    <message>
        <source>Force unmounting, even when files are still open</source>
        <translation>Aushängen erzwingen, auch wenn noch Dateien geöffnet sind</translation>
    </message>
    <message>
        <source>Unmount all volumes when Korvelle quits</source>
        <translation>Alle Volumes aushängen, wenn Korvelle beendet wird</translation>
    </message>
    <message>
        <source>Force unmounting when Korvelle quits</source>
        <translation>Aushängen beim Beenden von Korvelle erzwingen</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>%1%</source>
        <translation>%1 %</translation>
    </message>
</context>
<context>
    <name>Resize</name>
    <message>
        <source>Resize Disk Image</source>
        <translation>Größe des Images ändern</translation>
    </message>
    <message>
        <source>Choose the new size of the Disk Image</source>
        <translation>Wählen Sie die neue Größe des Images</translation>
    </message>
    <message>
        <source>The Disk Image is unmounted while it is resized, and mounted again where it was.</source>
        <translation>Das Image wird während der Größenänderung ausgehängt und danach am selben Ort wieder eingehängt.</translation>
    </message>
    <message>
        <source>Share of the new size your data uses:</source>
        <translation>Anteil Ihrer Daten an der neuen Größe:</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Resize</source>
        <translation>Größe ändern</translation>
    </message>
</context>
</TS>
