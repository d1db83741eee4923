<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr">
<context>
    <name>ChangePassword</name>
    <message>
        <source>Change Password</source>
        <translation>Changer le mot de passe</translation>
    </message>
    <message>
        <source>Enter the current password, then the new one twice.</source>
        <translation>Saisissez le mot de passe actuel, puis deux fois le nouveau.</translation>
    </message>
    <message>
        <source>Old password:</source>
        <translation>Ancien mot de passe&#xa0;:</translation>
    </message>
    <message>
        <source>Current password</source>
        <translation>Mot de passe actuel</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Changer</translation>
    </message>
</context>
<context>
    <name>CreateImageWizard</name>
    <message>
        <source>New Disk Image</source>
        <translation>Nouvelle image disque</translation>
    </message>
    <message>
        <source>Name your Disk Image</source>
        <translation>Nommez votre image disque</translation>
    </message>
    <message>
        <source>Name:</source>
        <translation>Nom&#xa0;:</translation>
    </message>
    <message>
        <source>Volume name</source>
        <translation>Nom du volume</translation>
    </message>
    <message>
        <source>Size:</source>
        <translation>Taille&#xa0;:</translation>
    </message>
    <message>
        <source>Encryption:</source>
        <translation>Chiffrement&#xa0;:</translation>
    </message>
    <message>
        <source>AES-128 (faster)</source>
        <translation>AES-128 (plus rapide)</translation>
    </message>
    <message>
        <source>AES-256 (stronger)</source>
        <translation>AES-256 (plus robuste)</translation>
    </message>
    <message>
        <source>Encryption</source>
        <translation>Chiffrement</translation>
    </message>
    <message>
        <source>Both keep your data safe. AES-128 is a little faster; AES-256 has the larger key.</source>
        <translation>Les deux protègent vos données. AES-128 est un peu plus rapide&#xa0;; AES-256 a la clé la plus longue.</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Taille</translation>
    </message>
    <message>
        <source>The largest the image can grow to. It takes only as much space on your disk as its contents need, and you can resize it later.</source>
        <translation>La taille maximale que l’image peut atteindre. Elle n’occupe sur votre disque que la place dont son contenu a besoin, et vous pourrez la redimensionner plus tard.</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Nom</translation>
    </message>
    <message>
        <source>The name the volume shows when it is mounted. It starts as the name of the file.</source>
        <translation>Le nom qu’affiche le volume une fois monté. Au départ, c’est le nom du fichier.</translation>
    </message>
    <message>
        <source>Choose a Password</source>
        <translation>Choisissez un mot de passe</translation>
    </message>
    <message>
        <source>Type the password twice. Nobody can open the image without it, and there is no way to recover it if you forget it.</source>
        <translation>Saisissez le mot de passe deux fois. Personne ne peut ouvrir l’image sans lui, et il est impossible de le récupérer si vous l’oubliez.</translation>
    </message>
    <message>
        <source>Creating your Disk Image</source>
        <translation>Création de votre image disque</translation>
    </message>
    <message>
        <source>Please wait while your disk image is being created and formatted.</source>
        <translation>Veuillez patienter pendant la création et le formatage de votre image disque.</translation>
    </message>
    <message>
        <source>Initializing</source>
        <translation>Initialisation</translation>
    </message>
    <message>
        <source>Creating</source>
        <translation>Création</translation>
    </message>
    <message>
        <source>Formatting</source>
        <translation>Formatage</translation>
    </message>
    <message>
        <source>Finishing</source>
        <translation>Finalisation</translation>
    </message>
    <message>
        <source>Disk Image Creation was Successful</source>
        <translation>L’image disque a été créée</translation>
    </message>
    <message>
        <source>Successful</source>
        <translation>Réussi</translation>
    </message>
    <message>
        <source>Go Back</source>
        <translation>Retour</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Continuer</translation>
    </message>
</context>
<context>
    <name>CreatePopover</name>
    <message>
        <source>Create Disk Image…</source>
        <translation>Créer une image disque…</translation>
    </message>
    <message>
        <source>A new encrypted file that keeps your data safe wherever you put it.</source>
        <translation>Un nouveau fichier chiffré qui protège vos données où que vous le placiez.</translation>
    </message>
    <message>
        <source>Encrypt Disk…</source>
        <translation>Chiffrer un disque…</translation>
    </message>
    <message>
        <source>Turn a partition into an encrypted volume, keeping what is on it.</source>
        <translation>Transforme une partition en volume chiffré en conservant son contenu.</translation>
    </message>
    <message>
        <source>Mount Disk…</source>
        <translation>Monter un disque…</translation>
    </message>
    <message>
        <source>Unlock an encrypted disk that is connected but not mounted.</source>
        <translation>Déverrouille un disque chiffré branché mais non monté.</translation>
    </message>
</context>
<context>
    <name>EncryptDiskWizard</name>
    <message>
        <source>Encrypt Disk</source>
        <translation>Chiffrer un disque</translation>
    </message>
    <message>
        <source>Choose a Partition</source>
        <translation>Choisissez une partition</translation>
    </message>
    <message>
        <source>Choose the partition to encrypt. Its data stays where it is and is encrypted in the background.</source>
        <translation>Choisissez la partition à chiffrer. Ses données restent en place et sont chiffrées en arrière-plan.</translation>
    </message>
    <message>
        <source>Choose a Passphrase</source>
        <translation>Choisissez une phrase secrète</translation>
    </message>
    <message>
        <source>Type the passphrase twice. The partition cannot be unlocked without it, and there is no way to recover it if you forget it.</source>
        <translation>Saisissez la phrase secrète deux fois. La partition ne peut pas être déverrouillée sans elle, et il est impossible de la récupérer si vous l’oubliez.</translation>
    </message>
    <message>
        <source>Preparing the Partition</source>
        <translation>Préparation de la partition</translation>
    </message>
    <message>
        <source>Please wait while the partition is prepared for encryption.</source>
        <translation>Veuillez patienter pendant la préparation de la partition au chiffrement.</translation>
    </message>
    <message>
        <source>Starting</source>
        <translation>Démarrage</translation>
    </message>
    <message>
        <source>Resizing</source>
        <translation>Redimensionnement</translation>
    </message>
    <message>
        <source>Creating</source>
        <translation>Création</translation>
    </message>
    <message>
        <source>Encrypting</source>
        <translation>Chiffrement</translation>
    </message>
    <message>
        <source>Preparing Disk for Encryption was Successful</source>
        <translation>Le disque a été préparé pour le chiffrement</translation>
    </message>
    <message>
        <source>Successful</source>
        <translation>Réussi</translation>
    </message>
    <message>
        <source>Go Back</source>
        <translation>Retour</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Continuer</translation>
    </message>
</context>
<context>
    <name>FavouriteMountViews</name>
    <message>
        <source>Mount Favorite</source>
        <translation>Monter le favori</translation>
    </message>
    <message>
        <source>Enter Password</source>
        <translation>Saisir le mot de passe</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Mot de passe</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Mount</source>
        <translation>Monter</translation>
    </message>
</context>
<context>
    <name>HelpPopovers</name>
    <message>
        <source>&lt;b&gt;Favorites and Mounted&lt;/b&gt;&lt;br&gt;Volumes that are open appear under Mounted. Drag a disk image here to keep it among your favorites, sorted into folders, and mount it again with a double-click.</source>
        <translation>&lt;b&gt;Favoris et Montés&lt;/b&gt;&lt;br&gt;Les volumes ouverts apparaissent sous «&#xa0;Montés&#xa0;». Faites glisser une image disque ici pour la garder parmi vos favoris, rangée dans des dossiers, et la monter de nouveau d’un double-clic.</translation>
    </message>
    <message>
        <source>&lt;b&gt;Commands&lt;/b&gt;&lt;br&gt;Change the password of the selected volume, erase its key, resize or compact a disk image, or decrypt a disk.</source>
        <translation>&lt;b&gt;Commandes&lt;/b&gt;&lt;br&gt;Changez le mot de passe du volume sélectionné, effacez sa clé, redimensionnez ou compactez une image disque, ou déchiffrez un disque.</translation>
    </message>
    <message>
        <source>&lt;b&gt;Create&lt;/b&gt;&lt;br&gt;Make a new encrypted disk image, encrypt a disk, or unlock an encrypted disk.</source>
        <translation>&lt;b&gt;Créer&lt;/b&gt;&lt;br&gt;Créez une nouvelle image disque chiffrée, chiffrez un disque ou déverrouillez un disque chiffré.</translation>
    </message>
    <message>
        <source>&lt;b&gt;Open a disk image&lt;/b&gt;&lt;br&gt;Drop an encrypted disk image here, or click to choose one, to mount it with its password.</source>
        <translation>&lt;b&gt;Ouvrir une image disque&lt;/b&gt;&lt;br&gt;Déposez ici une image disque chiffrée, ou cliquez pour en choisir une, afin de la monter avec son mot de passe.</translation>
    </message>
</context>
<context>
    <name>KVActionMenuView</name>
    <message>
        <source>Change Password</source>
        <translation>Changer le mot de passe</translation>
    </message>
    <message>
        <source>Erase Key</source>
        <translation>Effacer la clé</translation>
    </message>
    <message>
        <source>Resize</source>
        <translation>Redimensionner</translation>
    </message>
    <message>
        <source>Compact</source>
        <translation>Compacter</translation>
    </message>
    <message>
        <source>Decrypt</source>
        <translation>Déchiffrer</translation>
    </message>
</context>
<context>
    <name>KVAppDelegate</name>
    <message>
        <source>Your settings cannot be saved</source>
        <translation>Vos réglages ne peuvent pas être enregistrés</translation>
    </message>
    <message>
        <source>Korvelle cannot write its settings to %1. Changes to your favourites and preferences will be lost when Korvelle quits.</source>
        <translation>Korvelle ne peut pas écrire ses réglages dans %1. Les modifications de vos favoris et préférences seront perdues à la fermeture de Korvelle.</translation>
    </message>
    <message>
        <source>Choose a Disk Image:</source>
        <translation>Choisissez une image disque&#xa0;:</translation>
    </message>
    <message>
        <source>Disk Images (*.dmg *.sparseimage *.sparsebundle)</source>
        <translation>Images disque (*.dmg *.sparseimage *.sparsebundle)</translation>
    </message>
</context>
<context>
    <name>KVBusyVolumeAlert</name>
    <message>
        <source>No process of yours has files open on this volume.</source>
        <translation>Aucun de vos processus n’a de fichier ouvert sur ce volume.</translation>
    </message>
    <message>
        <source>Processes using the volume:</source>
        <translation>Processus utilisant le volume&#xa0;:</translation>
    </message>
    <message>
        <source>Force Unmount</source>
        <translation>Forcer le démontage</translation>
    </message>
</context>
<context>
    <name>KVCommandAlert</name>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Mot de passe</translation>
    </message>
</context>
<context>
    <name>KVCreateImageWizardController</name>
    <message>
        <source>Result</source>
        <translation>Résultat</translation>
    </message>
</context>
<context>
    <name>KVDetailPaneView</name>
    <message>
        <source>Welcome to Korvelle</source>
        <translation>Bienvenue dans Korvelle</translation>
    </message>
    <message>
        <source>Encrypted disk images and encrypted disks appear on the left once they are mounted. Choose one to see it here with its commands.</source>
        <translation>Les images disque et les disques chiffrés apparaissent à gauche une fois montés. Choisissez-en un pour le voir ici avec ses commandes.</translation>
    </message>
    <message>
        <source>To mount an encrypted disk image, drop it on the area at the bottom left or open it from the File menu. To make a new one, or to encrypt a disk, use the Create button in the toolbar.</source>
        <translation>Pour monter une image disque chiffrée, déposez-la dans la zone en bas à gauche ou ouvrez-la depuis le menu Fichier. Pour en créer une nouvelle, ou pour chiffrer un disque, utilisez le bouton Créer de la barre d’outils.</translation>
    </message>
    <message>
        <source>No Volume Selected</source>
        <translation>Aucun volume sélectionné</translation>
    </message>
    <message>
        <source>Double-click to rename</source>
        <translation>Double-cliquez pour renommer</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Renommer</translation>
    </message>
    <message>
        <source>Show in Files</source>
        <translation>Afficher dans Fichiers</translation>
    </message>
    <message>
        <source>More Info</source>
        <translation>Plus d’infos</translation>
    </message>
    <message>
        <source>Location:</source>
        <translation>Emplacement&#xa0;:</translation>
    </message>
    <message>
        <source>Status:</source>
        <translation>État&#xa0;:</translation>
    </message>
    <message>
        <source>%1 used of %2, %3 free</source>
        <translation>%1 utilisés sur %2, %3 libres</translation>
    </message>
    <message>
        <source>Kind:</source>
        <translation>Type&#xa0;:</translation>
    </message>
    <message>
        <source>Encrypted disk image</source>
        <translation>Image disque chiffrée</translation>
    </message>
    <message>
        <source>Encrypted disk</source>
        <translation>Disque chiffré</translation>
    </message>
    <message>
        <source>File system:</source>
        <translation>Système de fichiers&#xa0;:</translation>
    </message>
    <message>
        <source>Device:</source>
        <translation>Périphérique&#xa0;:</translation>
    </message>
    <message>
        <source>Volume UUID:</source>
        <translation>UUID du volume&#xa0;:</translation>
    </message>
    <message>
        <source>Logical volume:</source>
        <translation>Volume logique&#xa0;:</translation>
    </message>
    <message>
        <source>Capacity:</source>
        <translation>Capacité&#xa0;:</translation>
    </message>
    <message>
        <source>Available:</source>
        <translation>Disponible&#xa0;:</translation>
    </message>
    <message>
        <source>Used:</source>
        <translation>Utilisé&#xa0;:</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>Access:</source>
        <translation>Accès&#xa0;:</translation>
    </message>
    <message>
        <source>Read only</source>
        <translation>Lecture seule</translation>
    </message>
    <message>
        <source>Read and write</source>
        <translation>Lecture et écriture</translation>
    </message>
</context>
<context>
    <name>KVDiskListWizard</name>
    <message>
        <source>The disks cannot be listed</source>
        <translation>Impossible de lister les disques</translation>
    </message>
    <message>
        <source>Korvelle cannot reach its disk tools.</source>
        <translation>Korvelle ne trouve pas ses outils de disque.</translation>
    </message>
</context>
<context>
    <name>KVEncryptDiskWizardController</name>
    <message>
        <source>Result</source>
        <translation>Résultat</translation>
    </message>
    <message>
        <source>Disk</source>
        <translation>Disque</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Taille</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Nom</translation>
    </message>
    <message>
        <source>Korvelle cannot reach its disk tools.</source>
        <translation>Korvelle ne trouve pas ses outils de disque.</translation>
    </message>
</context>
<context>
    <name>KVFavouriteMountViewsController</name>
    <message>
        <source>Enter Password for %1</source>
        <translation>Saisir le mot de passe de %1</translation>
    </message>
</context>
<context>
    <name>KVFavouritesController</name>
    <message>
        <source>Untitled %1</source>
        <translation>Sans titre %1</translation>
    </message>
</context>
<context>
    <name>KVHelpBrowser</name>
    <message>
        <source>Korvelle Help</source>
        <translation>Aide de Korvelle</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Précédent</translation>
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
        <translation>Créer</translation>
    </message>
    <message>
        <source>Create a disk image, encrypt a disk or mount a disk</source>
        <translation>Créer une image disque, chiffrer un disque ou monter un disque</translation>
    </message>
    <message>
        <source>Add to Favorites</source>
        <translation>Ajouter aux favoris</translation>
    </message>
</context>
<context>
    <name>KVMainWindow</name>
    <message>
        <source>About Korvelle</source>
        <translation>À propos de Korvelle</translation>
    </message>
    <message>
        <source>&lt;h3&gt;Korvelle %1&lt;/h3&gt;</source>
        <translation>&lt;h3&gt;Korvelle %1&lt;/h3&gt;</translation>
    </message>
    <message>
        <source>Encrypted disk images and encrypted disks, without a terminal.</source>
        <translation>Images disque et disques chiffrés, sans terminal.</translation>
    </message>
    <message>
        <source>Drop a disk image to mount it</source>
        <translation>Déposez une image disque pour la monter</translation>
    </message>
    <message>
        <source>Open Disk Image…</source>
        <translation>Ouvrir une image disque…</translation>
    </message>
    <message>
        <source>sparseimage, sparsebundle or dmg</source>
        <translation>sparseimage, sparsebundle ou dmg</translation>
    </message>
    <message>
        <source>“%1”</source>
        <translation>«&#xa0;%1&#xa0;»</translation>
    </message>
    <message numerus="yes">
        <source>Quitting as soon as %1 can be unmounted…</source>
        <translation>
            <numerusform>Fermeture dès que %1 pourra être démonté…</numerusform>
            <numerusform>Fermeture dès que %1 pourront être démontés…</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>KVMountDiskController</name>
    <message>
        <source>Name</source>
        <translation>Nom</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Taille</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>État</translation>
    </message>
    <message>
        <source>Locked</source>
        <translation>Verrouillé</translation>
    </message>
    <message>
        <source>Unlocked</source>
        <translation>Déverrouillé</translation>
    </message>
</context>
<context>
    <name>KVMountImageSheet</name>
    <message>
        <source>Enter Password for %1</source>
        <translation>Saisir le mot de passe de %1</translation>
    </message>
</context>
<context>
    <name>KVMountedCellView</name>
    <message>
        <source>%1 of %2 used</source>
        <translation>%1 sur %2 utilisés</translation>
    </message>
</context>
<context>
    <name>KVOutlineView</name>
    <message>
        <source>Rename</source>
        <translation>Renommer</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Supprimer</translation>
    </message>
</context>
<context>
    <name>KVPasswordFieldView</name>
    <message>
        <source>Hide password</source>
        <translation>Masquer le mot de passe</translation>
    </message>
    <message>
        <source>Show password</source>
        <translation>Afficher le mot de passe</translation>
    </message>
</context>
<context>
    <name>KVPasswordStrengthMeterView</name>
    <message>
        <source>Password strength</source>
        <translation>Robustesse du mot de passe</translation>
    </message>
    <message>
        <source>Very weak</source>
        <translation>Très faible</translation>
    </message>
    <message>
        <source>Weak</source>
        <translation>Faible</translation>
    </message>
    <message>
        <source>Fair</source>
        <translation>Moyen</translation>
    </message>
    <message>
        <source>Good</source>
        <translation>Bon</translation>
    </message>
    <message>
        <source>Strong</source>
        <translation>Robuste</translation>
    </message>
</context>
<context>
    <name>KVResizeController</name>
    <message>
        <source>New size: %1</source>
        <translation>Nouvelle taille&#xa0;: %1</translation>
    </message>
    <message>
        <source>The size limits of this Disk Image could not be read.</source>
        <translation>Les limites de taille de cette image disque n’ont pas pu être lues.</translation>
    </message>
    <message>
        <source>%1 used</source>
        <translation>%1 utilisés</translation>
    </message>
    <message>
        <source>%1 free</source>
        <translation>%1 libres</translation>
    </message>
</context>
<context>
    <name>KVSidebarItemDelegate</name>
    <message>
        <source>Hide</source>
        <translation>Masquer</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Afficher</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Retirer</translation>
    </message>
    <message>
        <source>Drop a disk image below to mount it.</source>
        <translation>Déposez une image disque ci-dessous pour la monter.</translation>
    </message>
</context>
<context>
    <name>KVSidebarModel</name>
    <message>
        <source>Favorites</source>
        <translation>Favoris</translation>
    </message>
    <message>
        <source>Mounted</source>
        <translation>Montés</translation>
    </message>
    <message>
        <source>New Folder</source>
        <translation>Nouveau dossier</translation>
    </message>
    <message>
        <source>No volumes mounted</source>
        <translation>Aucun volume monté</translation>
    </message>
</context>
<context>
    <name>KVSlidingWizard</name>
    <message>
        <source>Continue</source>
        <translation>Continuer</translation>
    </message>
    <message>
        <source>Create</source>
        <translation>Créer</translation>
    </message>
    <message>
        <source>Finish</source>
        <translation>Terminer</translation>
    </message>
    <message>
        <source>Encrypt</source>
        <translation>Chiffrer</translation>
    </message>
    <message>
        <source>Mount</source>
        <translation>Monter</translation>
    </message>
</context>
<context>
    <name>KVTaskLauncher</name>
    <message>
        <source>Choose Disk Image location:</source>
        <translation>Emplacement de l’image disque&#xa0;:</translation>
    </message>
    <message>
        <source>Disk images (*.sparseimage)</source>
        <translation>Images disque (*.sparseimage)</translation>
    </message>
</context>
<context>
    <name>KVVolumeCommands</name>
    <message>
        <source>This will render all the data in this Disk Image inaccessible.</source>
        <translation>Toutes les données de cette image disque deviendront inaccessibles.</translation>
    </message>
    <message>
        <source>Are you sure you want to continue?</source>
        <translation>Voulez-vous vraiment continuer&#xa0;?</translation>
    </message>
    <message>
        <source>Erase</source>
        <translation>Effacer</translation>
    </message>
    <message>
        <source>Enter the password</source>
        <translation>Saisissez le mot de passe</translation>
    </message>
    <message>
        <source>Please enter the password for the Disk Image to continue the resize process.</source>
        <translation>Veuillez saisir le mot de passe de l’image disque pour poursuivre le redimensionnement.</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Continuer</translation>
    </message>
    <message>
        <source>This will shrink the Disk Image file on your drive to the smallest possible size.</source>
        <translation>Le fichier de l’image disque sera réduit à la plus petite taille possible sur votre disque.</translation>
    </message>
    <message>
        <source>Compact</source>
        <translation>Compacter</translation>
    </message>
    <message>
        <source>This will decrypt the data on this Disk.</source>
        <translation>Les données de ce disque seront déchiffrées.</translation>
    </message>
    <message>
        <source>The data will be accessible without a password. Are you sure you want to continue?</source>
        <translation>Les données seront accessibles sans mot de passe. Voulez-vous vraiment continuer&#xa0;?</translation>
    </message>
    <message>
        <source>Decrypt</source>
        <translation>Déchiffrer</translation>
    </message>
</context>
<context>
    <name>KVWindowActions</name>
    <message>
        <source>&amp;New Disk Image…</source>
        <translation>&amp;Nouvelle image disque…</translation>
    </message>
    <message>
        <source>Ctrl+N</source>
        <translation>Ctrl+N</translation>
    </message>
    <message>
        <source>&amp;Open Disk Image…</source>
        <translation>&amp;Ouvrir une image disque…</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>&amp;Encrypt Disk…</source>
        <translation>&amp;Chiffrer un disque…</translation>
    </message>
    <message>
        <source>&amp;Mount Disk…</source>
        <translation>&amp;Monter un disque…</translation>
    </message>
    <message>
        <source>New Favorites &amp;Folder</source>
        <translation>Nouveau &amp;dossier de favoris</translation>
    </message>
    <message>
        <source>&amp;Preferences…</source>
        <translation>&amp;Préférences…</translation>
    </message>
    <message>
        <source>Ctrl+,</source>
        <translation>Ctrl+,</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Quitter</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>&amp;Rename</source>
        <translation>&amp;Renommer</translation>
    </message>
    <message>
        <source>&amp;Show in Files</source>
        <translation>Afficher dans &amp;Fichiers</translation>
    </message>
    <message>
        <source>Add to &amp;Favorites</source>
        <translation>Ajouter aux fa&amp;voris</translation>
    </message>
    <message>
        <source>&amp;Change Password…</source>
        <translation>&amp;Changer le mot de passe…</translation>
    </message>
    <message>
        <source>Erase &amp;Key…</source>
        <translation>&amp;Effacer la clé…</translation>
    </message>
    <message>
        <source>Re&amp;size…</source>
        <translation>Re&amp;dimensionner…</translation>
    </message>
    <message>
        <source>Com&amp;pact…</source>
        <translation>Com&amp;pacter…</translation>
    </message>
    <message>
        <source>&amp;Decrypt…</source>
        <translation>Déc&amp;hiffrer…</translation>
    </message>
    <message>
        <source>&amp;Unmount</source>
        <translation>Dé&amp;monter</translation>
    </message>
    <message>
        <source>Ctrl+E</source>
        <translation>Ctrl+E</translation>
    </message>
    <message>
        <source>Unmount &amp;All</source>
        <translation>&amp;Tout démonter</translation>
    </message>
    <message>
        <source>Ctrl+Shift+E</source>
        <translation>Ctrl+Shift+E</translation>
    </message>
    <message>
        <source>Show &amp;Tips</source>
        <translation>Afficher les as&amp;tuces</translation>
    </message>
    <message>
        <source>Korvelle &amp;Help</source>
        <translation>&amp;Aide de Korvelle</translation>
    </message>
    <message>
        <source>How Your Data Is &amp;Encrypted</source>
        <translation>Comment vos données sont &amp;chiffrées</translation>
    </message>
    <message>
        <source>&amp;Troubleshooting</source>
        <translation>&amp;Dépannage</translation>
    </message>
    <message>
        <source>&amp;About Korvelle</source>
        <translation>À &amp;propos de Korvelle</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Fichier</translation>
    </message>
    <message>
        <source>&amp;Volume</source>
        <translation>&amp;Volume</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Aide</translation>
    </message>
</context>
<context>
    <name>KVWizardProgressCirclesView</name>
    <message>
        <source>Wizard progress</source>
        <translation>Progression de l’assistant</translation>
    </message>
    <message>
        <source>Step %1 of %2</source>
        <translation>Étape %1 sur %2</translation>
    </message>
</context>
<context>
    <name>Korvelle</name>
    <message>
        <source>hdiutil ended abnormally.</source>
        <translation>hdiutil s’est arrêté anormalement.</translation>
    </message>
    <message>
        <source>Encrypting Disk failed</source>
        <translation>Échec du chiffrement du disque</translation>
    </message>
    <message>
        <source>diskutil cs ended abnormally.</source>
        <translation>diskutil cs s’est arrêté anormalement.</translation>
    </message>
    <message>
        <source>Could not find disk</source>
        <translation>Disque introuvable</translation>
    </message>
    <message>
        <source>The given file system is not supported on Core Storage</source>
        <translation>Ce système de fichiers n’est pas pris en charge par Core Storage</translation>
    </message>
    <message>
        <source>The target disk is already in use by Core Storage</source>
        <translation>Le disque cible est déjà utilisé par Core Storage</translation>
    </message>
    <message>
        <source>Wrong Password</source>
        <translation>Mot de passe incorrect</translation>
    </message>
    <message>
        <source>Disk doesn&apos;t exist</source>
        <translation>Le disque n’existe pas</translation>
    </message>
    <message>
        <source>The Disk is not locked</source>
        <translation>Le disque n’est pas verrouillé</translation>
    </message>
    <message>
        <source>Decrypting failed</source>
        <translation>Échec du déchiffrement</translation>
    </message>
    <message>
        <source>diskutil ended abnormally.</source>
        <translation>diskutil s’est arrêté anormalement.</translation>
    </message>
    <message>
        <source>Unlocking Disk failed</source>
        <translation>Échec du déverrouillage du disque</translation>
    </message>
    <message>
        <source>Mounting Disk failed</source>
        <translation>Échec du montage du disque</translation>
    </message>
    <message>
        <source>diskutil mount ended abnormally.</source>
        <translation>diskutil mount s’est arrêté anormalement.</translation>
    </message>
    <message>
        <source>Unmounting (eject) Disk failed</source>
        <translation>Échec du démontage (éjection) du disque</translation>
    </message>
    <message>
        <source>Renaming Volume failed</source>
        <translation>Échec du renommage du volume</translation>
    </message>
    <message>
        <source>This is not a valid volume name</source>
        <translation>Ce nom de volume n’est pas valide</translation>
    </message>
    <message>
        <source>Changing password failed</source>
        <translation>Échec du changement de mot de passe</translation>
    </message>
    <message>
        <source>Error executing system_profiler command</source>
        <translation>Erreur lors de l’exécution de la commande system_profiler</translation>
    </message>
    <message>
        <source>system_profiler ended abnormally.</source>
        <translation>system_profiler s’est arrêté anormalement.</translation>
    </message>
    <message>
        <source>system_profiler output is not a property list.</source>
        <translation>La sortie de system_profiler n’est pas une liste de propriétés.</translation>
    </message>
    <message>
        <source>Error diskutil info: Could not find disk</source>
        <translation>Erreur de diskutil info&#xa0;: disque introuvable</translation>
    </message>
    <message>
        <source>Error executing diskutil command</source>
        <translation>Erreur lors de l’exécution de la commande diskutil</translation>
    </message>
    <message>
        <source>diskutil output is not a property list.</source>
        <translation>La sortie de diskutil n’est pas une liste de propriétés.</translation>
    </message>
    <message>
        <source>Unmount failed</source>
        <translation>Échec du démontage</translation>
    </message>
    <message>
        <source>Volume has no mount point</source>
        <translation>Le volume n’a pas de point de montage</translation>
    </message>
    <message>
        <source>hdiutil output is not a property list.</source>
        <translation>La sortie de hdiutil n’est pas une liste de propriétés.</translation>
    </message>
    <message>
        <source>Error executing hdiutil command</source>
        <translation>Erreur lors de l’exécution de la commande hdiutil</translation>
    </message>
    <message>
        <source>Mounting Disk Image failed</source>
        <translation>Échec du montage de l’image disque</translation>
    </message>
    <message>
        <source>Disk Image doesn&apos;t exist</source>
        <translation>L’image disque n’existe pas</translation>
    </message>
    <message>
        <source>Invalid Mount Path</source>
        <translation>Chemin de montage non valide</translation>
    </message>
    <message>
        <source>Resource busy, Disk Image may already be mounted.</source>
        <translation>Ressource occupée, l’image disque est peut-être déjà montée.</translation>
    </message>
    <message>
        <source>Disk Volume point doesn&apos;t exist</source>
        <translation>Le point de montage du volume n’existe pas</translation>
    </message>
    <message>
        <source>Resource busy, Volume may still be used.</source>
        <translation>Ressource occupée, le volume est peut-être encore utilisé.</translation>
    </message>
    <message>
        <source>Disk Image creation failed</source>
        <translation>Échec de la création de l’image disque</translation>
    </message>
    <message>
        <source>There is no path parameter</source>
        <translation>Aucun chemin n’a été indiqué</translation>
    </message>
    <message>
        <source>File or directory doesn&apos;t exist</source>
        <translation>Le fichier ou le dossier n’existe pas</translation>
    </message>
    <message>
        <source>File already exists.</source>
        <translation>Le fichier existe déjà.</translation>
    </message>
    <message>
        <source>Erasing Keys failed</source>
        <translation>Échec de l’effacement des clés</translation>
    </message>
    <message>
        <source>Acquiring limits information failed</source>
        <translation>Échec de la lecture des limites de taille</translation>
    </message>
    <message>
        <source>Resizing failed</source>
        <translation>Échec du redimensionnement</translation>
    </message>
    <message>
        <source>Disk Image is mounted</source>
        <translation>L’image disque est montée</translation>
    </message>
    <message>
        <source>Compact failed</source>
        <translation>Échec du compactage</translation>
    </message>
    <message>
        <source>The file couldn’t be opened.</source>
        <translation>Le fichier n’a pas pu être ouvert.</translation>
    </message>
    <message>
        <source>The file “%1” couldn’t be opened because there is no such file.</source>
        <translation>Le fichier «&#xa0;%1&#xa0;» n’a pas pu être ouvert car il n’existe pas.</translation>
    </message>
    <message>
        <source>The reference to the file is damaged.</source>
        <translation>La référence au fichier est endommagée.</translation>
    </message>
    <message>
        <source>The file “%1” couldn’t be opened: %2.</source>
        <translation>Le fichier «&#xa0;%1&#xa0;» n’a pas pu être ouvert&#xa0;: %2.</translation>
    </message>
    <message>
        <source>The data couldn’t be read because it isn’t in the correct format.</source>
        <translation>Les données n’ont pas pu être lues car leur format est incorrect.</translation>
    </message>
    <message>
        <source>FileHandle error.</source>
        <translation>Erreur d’accès au fichier.</translation>
    </message>
    <message>
        <source>%1 could not be started (%2).</source>
        <translation>%1 n’a pas pu être lancé (%2).</translation>
    </message>
    <message>
        <source>Not a valid volume</source>
        <translation>Volume non valide</translation>
    </message>
    <message>
        <source>Disk Image Creation was Successful</source>
        <translation>L’image disque a été créée</translation>
    </message>
    <message>
        <source>Successful</source>
        <translation>Réussi</translation>
    </message>
    <message>
        <source>Your Disk Image is now ready for use. Wasn&apos;t that hard, was it? It will be automatically mounted for you if you like to.</source>
        <translation>Votre image disque est prête. Ce n’était pas si difficile, n’est-ce pas&#xa0;? Elle sera montée automatiquement si vous le souhaitez.</translation>
    </message>
    <message>
        <source>The existing file “%1” couldn’t be removed.</source>
        <translation>Le fichier existant «&#xa0;%1&#xa0;» n’a pas pu être supprimé.</translation>
    </message>
    <message>
        <source>Korvelle cannot reach its disk image tool.</source>
        <translation>Korvelle ne trouve pas son outil d’images disque.</translation>
    </message>
    <message>
        <source>Preparing Disk for Encryption was Successful</source>
        <translation>Le disque a été préparé pour le chiffrement</translation>
    </message>
    <message>
        <source>The Disk is now prepared for encrypting. The actual encrypting will be happening in the background. You can follow the progress in the “Mounted” list.</source>
        <translation>Le disque est prêt à être chiffré. Le chiffrement proprement dit se déroule en arrière-plan. Vous pouvez suivre sa progression dans la liste «&#xa0;Montés&#xa0;».</translation>
    </message>
    <message>
        <source>Encrypting failed</source>
        <translation>Échec du chiffrement</translation>
    </message>
    <message>
        <source>The program %1 is missing, so Korvelle cannot run it.</source>
        <translation>Le programme %1 est absent, Korvelle ne peut donc pas l’exécuter.</translation>
    </message>
</context>
<context>
    <name>MountDisk</name>
    <message>
        <source>Mount Disk</source>
        <translation>Monter un disque</translation>
    </message>
    <message>
        <source>Mount a Disk</source>
        <translation>Monter un disque</translation>
    </message>
    <message>
        <source>Choose the volume to mount. A locked volume asks for its passphrase next.</source>
        <translation>Choisissez le volume à monter. Un volume verrouillé demande ensuite sa phrase secrète.</translation>
    </message>
    <message>
        <source>Unlock the Volume</source>
        <translation>Déverrouiller le volume</translation>
    </message>
    <message>
        <source>The volume is encrypted. Type its passphrase to unlock and mount it.</source>
        <translation>Le volume est chiffré. Saisissez sa phrase secrète pour le déverrouiller et le monter.</translation>
    </message>
    <message>
        <source>Passphrase:</source>
        <translation>Phrase secrète&#xa0;:</translation>
    </message>
    <message>
        <source>Passphrase</source>
        <translation>Phrase secrète</translation>
    </message>
    <message>
        <source>Go Back</source>
        <translation>Retour</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Continuer</translation>
    </message>
</context>
<context>
    <name>MountImageSheet</name>
    <message>
        <source>Mount Disk Image</source>
        <translation>Monter l’image disque</translation>
    </message>
    <message>
        <source>Enter Password</source>
        <translation>Saisir le mot de passe</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Mot de passe</translation>
    </message>
    <message>
        <source>Mount under this folder:</source>
        <translation>Monter dans ce dossier&#xa0;:</translation>
    </message>
    <message>
        <source>The usual place</source>
        <translation>L’emplacement habituel</translation>
    </message>
    <message>
        <source>Mount read-only</source>
        <translation>Monter en lecture seule</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Mount</source>
        <translation>Monter</translation>
    </message>
</context>
<context>
    <name>NewPasswordForm</name>
    <message>
        <source>New password:</source>
        <translation>Nouveau mot de passe&#xa0;:</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Mot de passe</translation>
    </message>
    <message>
        <source>Verify:</source>
        <translation>Confirmation&#xa0;:</translation>
    </message>
    <message>
        <source>Password again</source>
        <translation>Mot de passe à nouveau</translation>
    </message>
</context>
<context>
    <name>Preferences</name>
    <message>
        <source>Preferences</source>
        <translation>Préférences</translation>
    </message>
    <message>
        <source>Mounting</source>
        <translation>Montage</translation>
    </message>
    <message>
        <source>Open the volume in the file manager after mounting</source>
        <translation>Ouvrir le volume dans le gestionnaire de fichiers après le montage</translation>
    </message>
    <message>
        <source>Add mounted and created disk images to the recent documents</source>
        <translation>Ajouter les images disque montées et créées aux documents récents</translation>
    </message>
    <message>
        <source>Mount a disk image right after creating it</source>
        <translation>Monter une image disque dès sa création</translation>
    </message>
    <message>
        <source>Unmounting</source>
        <translation>Démontage</translation>
    </message>
    <message>
        <source>Force unmounting, even when files are still open</source>
        <translation>Forcer le démontage, même si des fichiers sont encore ouverts</translation>
    </message>
    <message>
        <source>Unmount all volumes when Korvelle quits</source>
        <translation>Démonter tous les volumes à la fermeture de Korvelle</translation>
    </message>
    <message>
        <source>Force unmounting when Korvelle quits</source>
        <translation>Forcer le démontage à la fermeture de Korvelle</translation>
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
        <translation>Redimensionner l’image disque</translation>
    </message>
    <message>
        <source>Choose the new size of the Disk Image</source>
        <translation>Choisissez la nouvelle taille de l’image disque</translation>
    </message>
    <message>
        <source>The Disk Image is unmounted while it is resized, and mounted again where it was.</source>
        <translation>L’image disque est démontée pendant le redimensionnement, puis remontée au même endroit.</translation>
    </message>
    <message>
        <source>Share of the new size your data uses:</source>
        <translation>Part de la nouvelle taille occupée par vos données&#xa0;:</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Resize</source>
        <translation>Redimensionner</translation>
    </message>
</context>
</TS>
