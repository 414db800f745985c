"""Messages: the files of locales/message."""

# The languages of the texts, in their order. Files of other languages hold none.
LANGUAGES = ("us_english", "french", "german", "japanese")

# Words of the result codes, in the languages' order.
COMMON_WORDS = {
    1: ("information", "information", "Information", "情報"),
    2: ("warning", "avertissement", "Warnung", "警告"),
    3: ("error", "erreur", "Fehler", "エラー"),
    4: ("fatal error", "erreur fatale", "schwerer Fehler", "致命的エラー"),
}
CLIENT_TEXTS = {
    1: ("The localization files could not be loaded.",
        "Les fichiers de localisation n'ont pas pu être chargés.",
        "Die Lokalisierungsdateien konnten nicht geladen werden.",
        "ローカライズファイルを読み込めませんでした。"),
    2: ("The conversion is not supported.", "La conversion n'est pas prise en charge.",
        "Die Umwandlung wird nicht unterstützt.", "この変換はサポートされていません。"),
}
RESULT_TEXTS = {
    1: ("success", "succès", "Erfolg", "成功"),
    0: ("failure", "échec", "Fehlschlag", "失敗"),
    -1: ("out of memory", "mémoire insuffisante", "kein Speicher mehr", "メモリ不足"),
    -101: ("the value overflows its destination", "la valeur dépasse la destination",
           "der Wert ist zu groß für das Ziel", "値が変換先の範囲を超えています"),
    -102: ("the value underflows its destination", "la valeur est trop petite",
           "der Wert ist zu klein für das Ziel", "値が小さすぎます"),
    -103: ("the precision is not valid", "la précision n'est pas valide",
           "die Genauigkeit ist ungültig", "精度が無効です"),
    -104: ("the scale is not valid", "l'échelle n'est pas valide",
           "die Anzahl der Dezimalstellen ist ungültig", "小数点以下の桁数が無効です"),
    -105: ("syntax error", "erreur de syntaxe", "Syntaxfehler", "構文エラー"),
    -106: ("the format is not valid", "le format n'est pas valide", "das Format ist ungültig",
           "書式が無効です"),
    -107: ("the source value is out of its domain", "la valeur source est hors de son domaine",
           "der Quellwert liegt außerhalb seines Bereichs", "元の値が範囲外です"),
    -108: ("division by zero", "division par zéro", "Division durch null", "ゼロによる除算"),
    -113: ("the data were truncated", "les données ont été tronquées",
           "die Daten wurden abgeschnitten", "データが切り捨てられました"),
    -114: ("the date style is unknown", "le style de date est inconnu",
           "der Datumsstil ist unbekannt", "日付の形式が不明です"),
    -115: ("a character could not be converted", "un caractère n'a pas pu être converti",
           "ein Zeichen konnte nicht umgewandelt werden", "変換できない文字があります"),
    -116: ("no conversion between the character sets exists",
           "aucune conversion entre ces jeux de caractères",
           "zwischen den Zeichensätzen gibt es keine Umwandlung", "文字セット間の変換がありません"),
    -117: ("missing characters were replaced", "des caractères absents ont été remplacés",
           "fehlende Zeichen wurden ersetzt", "存在しない文字が置き換えられました"),
    -301: ("a localization file is damaged", "un fichier de localisation est endommagé",
           "eine Lokalisierungsdatei ist beschädigt", "ローカライズファイルが壊れています"),
    -414: ("a localization file could not be opened",
           "un fichier de localisation n'a pas pu être ouvert",
           "eine Lokalisierungsdatei konnte nicht geöffnet werden",
           "ローカライズファイルを開けませんでした"),
}
MESSAGE_FILES = {"common.loc": COMMON_WORDS, "cslib.loc": CLIENT_TEXTS, "comnlib.loc": RESULT_TEXTS}


def message_file(texts, language):
    lines = ["; UTF-8", "[messages]"]
    if language in LANGUAGES:
        index = LANGUAGES.index(language)
        lines += [f'{number} = "{words[index]}"' for number, words in texts.items()]
    return lines
