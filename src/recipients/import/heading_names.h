// What lists call the fields of a recipient, in English, German, French, Spanish, Italian, Portuguese, Dutch, Polish,
// Swedish, Danish, Norwegian, Finnish, Czech, Turkish, Russian, Greek, Japanese and Chinese, and as address books and
// web shops write them. In small letters, without blanks, hyphens and other signs.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "recipients/recipient.h"

namespace quillcast::recipients {

// Beside the positions in kFields: a name that is to be parted into first and last.
inline constexpr std::size_t kWholeName = kFieldCount;

// By position in kFields; names are parted by blanks.
inline constexpr std::array<std::string_view, kFieldCount> kHeadingNames = {
    // Email Address
    "emailaddress email emails mail mailaddress emailid eaddress emailaddr primaryemail email1value "
    "email1address useremail emailadresse mailadresse epost epostadresse adressemail adresseemail adressemel courriel "
    "mel "
    "adresseelectronique adressemél mél courrierelectronique correo correoelectronico correoelectrónico "
    "direcciondecorreo direccióndecorreo direccióndecorreoelectrónico dircorreo indirizzoemail postaelettronica "
    "indirizzoelettronico enderecoemail endereçodeemail endereçoeletrônico endereçodeemail correioeletrônico "
    "correioeletrónico emailadres mailadres adresemail adresmail adresemailowy pocztaelektroniczna epostadress "
    "mejladress mejl sähköposti sahkoposti sähköpostiosoite emailová emailovaadresa emailováadresa eposta epostaadresi "
    "элпочта электроннаяпочта почта емейл имейл емайл адресэлектроннойпочты адресэлпочты "
    "ηλεκτρονικόταχυδρομείο メール メールアドレス eメール 电子邮件 电子邮箱 邮箱 邮件 電子郵件 邮箱地址 이메일",
    // Title
    "title salutation prefix nameprefix honorific honorificprefix anrede titel civilité civilite titre tratamiento "
    "titulo título trattamento titolo aanhef zwrot tytuł tilltal titteli osloveni oslovení hitap unvan обращение "
    "титул προσφώνηση 敬称 称呼 尊称 稱謂",
    // First Name
    "firstname givenname forename first fname givennames christianname vorname rufname prénom prenom nombre nombres "
    "nombredepila nome nomedibattesimo primeironome voornaam roepnaam imię imie imiona förnamn fornamn fornavn etunimi "
    "jméno jmeno křestníjméno isim adı ad имя όνομα 名 名前 名字",
    // Last Name
    "lastname surname familyname last lname secondname nachname familienname zuname nom nomdefamille apellido "
    "apellidos "
    "cognome sobrenome apelido ultimonome últimonome achternaam familienaam nazwisko efternamn etternavn efternavn "
    "sukunimi příjmení prijmeni soyadı soyad soyisim фамилия επώνυμο επίθετο 姓 苗字 姓氏",
    // Country
    "country countryregion countryname countrycode nation land staat pays país pais paese nazione nação nacao kraj "
    "państwo panstwo maa země zeme stát ülke ulke страна χώρα 国 国家 国名 國家",
    // State
    "state province region county stateprovince statecode provincecode stateregion bundesland kanton provinz "
    "département departement région provincia región regione estado distrito provincie województwo wojewodztwo län "
    "fylke maakunta okres il bölge область регион край νομός περιφέρεια 都道府県 省 省份 州",
    // City
    "city town locality ort stadt wohnort ville commune localité localite ciudad población poblacion municipio "
    "localidad "
    "città citta comune località cidade localidade stad plaats woonplaats miasto miejscowość miejscowosc postort by "
    "poststed kaupunki postitoimipaikka město mesto obec şehir sehir ilçe город населённыйпункт πόλη 市区町村 市 城市",
    // Address 1
    "address1 address addressline1 street streetaddress street1 addr1 addr strasse straße anschrift adresse "
    "strasseundhausnummer straßeundhausnummer strassehausnr adresse1 rue voie adressepostale direccion dirección calle "
    "domicilio direccion1 dirección1 indirizzo via indirizzo1 endereço endereco morada rua endereço1 adres straat "
    "straatnaam adres1 ulica adress gata gatuadress adress1 gate vej katuosoite osoite lähiosoite ulice adresa adresi "
    "adres1 sokak адрес улица адрес1 διεύθυνση οδός 住所 番地 地址 住址",
    // Address 2
    "address2 addressline2 street2 addr2 suite apartment adresszusatz zusatz adresse2 complément complementadresse "
    "complémentdadresse direccion2 dirección2 indirizzo2 endereço2 complemento adres2 toevoeging adress2 coadress "
    "adressrad2 osoite2 адрес2 建物名 地址2",
    // ZIP Code
    "zipcode zip postalcode postcode zippostalcode plz postleitzahl codepostal cp codigopostal códigopostal cap "
    "codicepostale cep kodpocztowy postnummer postnr postinumero psč psc směrovacíčíslo postakodu индекс "
    "почтовыйиндекс ταχυδρομικόςκώδικας τκ 郵便番号 邮编 邮政编码 郵遞區號",
    // Phone
    "phone phonenumber telephone telephonenumber tel telno phone1value phone1 mobile mobilephone cell cellphone "
    "telefon telefonnummer rufnummer handy mobil téléphone telephonefixe portable numérodetéléphone teléfono telefono "
    "móvil movil celular cellulare telefone telemóvel telefoon telefoonnummer mobiel numertelefonu komórka telefonnr "
    "puhelin puhelinnumero matkapuhelin telefonníčíslo telefonnumarası телефон мобильный τηλέφωνο κινητό 電話 "
    "電話番号 电话 手机 電話號碼",
    // Fax
    "fax faxnumber faxno telefax faxnummer télécopie telecopie télécopieur numérodefax faks numerfaksu faksi "
    "факс φαξ ファックス fax番号 传真 傳真",
    // Company
    "company companyname organization organisation organizationname organization1name business employer firma "
    "firmenname unternehmen société societe entreprise raisonsociale empresa compañía compania organización "
    "organizacion azienda società ragionesociale ditta companhia bedrijf bedrijfsnaam organisatie nazwafirmy "
    "przedsiębiorstwo företag foretag virksomhed bedrift yritys společnost spolecnost şirket sirket компания "
    "организация фирма εταιρεία 会社 会社名 公司 公司名称",
    // Job Title
    "jobtitle job position role occupation organization1title function profession beruf position stelle funktion "
    "berufsbezeichnung fonction poste puesto cargo professione ruolo mansione profissão função functie functietitel "
    "beroep stanowisko zawód befattning yrke stilling tehtävänimike ammatti pozice funkce povolání unvanı meslek "
    "должность профессия θέση 役職 職業 职位 职务",
    // Web Site
    "website web url homepage webpage site website1value internet webseite internetseite siteweb siteinternet sitioweb "
    "páginaweb paginaweb sitoweb sito sitedainternet webstek stronawww www stronainternetowa webbplats hemsida "
    "hjemmeside nettsted verkkosivu kotisivu webovástránka websitesi сайт вебсайт ιστοσελίδα ホームページ 网站 網站",
    // Additional Field 1 to 3
    "additionalfield1 field1 add1 custom1 customfield1 userfield1 zusatzfeld1 feld1",
    "additionalfield2 field2 add2 custom2 customfield2 userfield2 zusatzfeld2 feld2",
    "additionalfield3 field3 add3 custom3 customfield3 userfield3 zusatzfeld3 feld3"};

// A whole name: the last name where there is a first one, else the first.
inline constexpr std::string_view kWholeNames =
    "name fullname displayname contactname customername customer contact nomcomplet nombrecompleto nomecompleto "
    "nomecognome volledigenaam naam namn navn nimi fio фио полноеимя ονοματεπώνυμο 氏名 お名前 姓名";

// What shops and address books write before a field of which they have several.
inline constexpr std::string_view kHeadingQualifiers =
    "billing payment invoice defaultaddress customer contact primary main business work company home personal private "
    "shipping delivery rechnungs kunden geschäftlich geschaeftlich privat liefer facturation facturación fatturazione "
    "user "
    "subscriber member address1 location1";

}  // namespace quillcast::recipients
