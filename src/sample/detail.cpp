#include "sample/detail.hpp"

#include "platform/runtime.hpp"

namespace hist::sample::detail {

namespace {
uint64_t splitmix(uint64_t& x) {
    uint64_t z = (x += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}
uint64_t rotl(uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }

}  // namespace

Rng::Rng(uint64_t seed, uint64_t stream) {
    uint64_t x = seed ^ (stream * 0xD1B54A32D192ED03ull);
    for (auto& s : s_) s = splitmix(x);
}

uint64_t Rng::next() {
    const uint64_t result = rotl(s_[1] * 5, 7) * 9;
    const uint64_t t = s_[1] << 17;
    s_[2] ^= s_[0];
    s_[3] ^= s_[1];
    s_[1] ^= s_[2];
    s_[0] ^= s_[3];
    s_[2] ^= t;
    s_[3] = rotl(s_[3], 45);
    return result;
}

// The calendar is the runtime's: whole-day serials from 1899-12-30.
int serialOf(int year, int month, int day) { return static_cast<int>(rt::dateSerial(year, month, day)); }

void civilOf(int serial, int& year, int& month, int& day) {
    const rt::DateParts p = rt::splitDate(serial);
    year = p.year;
    month = p.month;
    day = p.day;
}

int workingOnOrAfter(int serial) {
    while (!isWorkingDay(serial)) ++serial;
    return serial;
}

int addWorkingDays(int serial, int n) {
    serial = workingOnOrAfter(serial);
    while (n-- > 0) serial = workingOnOrAfter(serial + 1);
    return serial;
}

std::string isoText(int serial, int seconds) {
    int y, m, d;
    civilOf(serial, y, m, d);
    std::string s = "0000-00-00 00:00:00";
    auto put = [&s](std::size_t at, int v, int width) {
        for (int k = width - 1; k >= 0; --k, v /= 10) s[at + static_cast<std::size_t>(k)] = static_cast<char>('0' + v % 10);
    };
    put(0, y, 4);
    put(5, m, 2);
    put(8, d, 2);
    put(11, seconds / 3600 % 24, 2);
    put(14, seconds / 60 % 60, 2);
    put(17, seconds % 60, 2);
    return s;
}

std::string shortDate(int serial) {
    const std::string iso = isoText(serial);
    return iso.substr(8, 2) + "/" + iso.substr(5, 2) + "/" + iso.substr(0, 4);
}

// ---- Vocabulary ----

namespace {
// Phase plans: 0 fixed metal-ceramic, 1 zirconia / pressed ceramic (CAD/CAM),
// 2 removable acrylic, 3 cobalt-chrome framework, 4 splints and appliances,
// 5 repairs, 6 models and trays, 7 implant work.
constexpr Article kArticles[] = {
    {"CMC", "Corona metal-cerámica", 95.0, 0, 0, true, 0},
    {"CZM", "Corona de circonio monolítico", 120.0, 0, 0, true, 1},
    {"CZE", "Corona de circonio estratificada", 140.0, 0, 0, true, 1},
    {"CDL", "Corona de disilicato de litio", 135.0, 0, 0, true, 1},
    {"CPR", "Corona provisional de resina", 25.0, 0, 0, true, 6},
    {"CIM", "Corona atornillada sobre implante", 190.0, 0, 10, true, 7},
    {"PIL", "Pilar personalizado de titanio", 110.0, 0, 10, true, 7},
    {"INC", "Incrustación de disilicato (inlay/onlay)", 90.0, 0, 0, true, 1},
    {"CAR", "Carilla de porcelana feldespática", 150.0, 0, 0, true, 1},
    {"PON", "Póntico de puente metal-cerámica", 85.0, 0, 0, true, 0},
    {"PZR", "Póntico de circonio", 105.0, 0, 0, true, 1},
    {"PPR", "Prótesis parcial removible de resina", 160.0, 0, 0, false, 2},
    {"ESQ", "Esquelético de cromo-cobalto", 240.0, 0, 0, false, 3},
    {"PCS", "Prótesis completa superior", 280.0, 0, 0, false, 2},
    {"PCI", "Prótesis completa inferior", 280.0, 0, 0, false, 2},
    {"FER", "Férula de descarga rígida", 70.0, 0, 0, false, 4},
    {"FEB", "Férula de blanqueamiento", 35.0, 0, 0, false, 4},
    {"REP", "Reparación de prótesis por fractura", 40.0, 0, 0, false, 5},
    {"REB", "Rebase de prótesis en resina", 55.0, 0, 0, false, 5},
    {"AGD", "Añadido de diente a prótesis", 30.0, 0, 0, true, 5},
    {"GAN", "Retenedor colado (gancho)", 18.0, 0, 0, true, 3},
    {"ATC", "Ataché de precisión", 60.0, 0, 5, false, 3},
    {"MOD", "Modelo de estudio en escayola", 12.0, 0, 0, false, 6},
    {"ENC", "Encerado diagnóstico por pieza", 20.0, 0, 0, true, 6},
    {"CUB", "Cubeta individual", 15.0, 0, 0, false, 6},
    {"PLB", "Plancha base con rodetes de cera", 18.0, 0, 0, false, 6},
    {"HIB", "Prótesis híbrida atornillada sobre implantes", 1200.0, 0, 10, false, 7},
    {"BAR", "Barra fresada de titanio", 650.0, 0, 10, false, 7},
    {"ORT", "Aparato de ortodoncia removible", 120.0, 0, 0, false, 4},
    {"RET", "Retenedor de ortodoncia termoformado", 45.0, 0, 0, false, 4},
    {"PRD", "Protector bucal deportivo", 50.0, 0, 0, false, 4},
    {"CAD", "Escaneado y diseño CAD/CAM", 25.0, 0, 0, false, 1},
    {"MAQ", "Maquillaje y glaseado adicional", 15.0, 0, 0, true, 1},
    {"URG", "Suplemento por urgencia", 30.0, 21, 0, false, 6},
    {"POR", "Portes y mensajería", 6.5, 21, 0, false, 6},
    {"MAT", "Material de impresión (silicona de adición)", 22.0, 21, 0, false, 6},
};
constexpr int kMain[] = {0, 0, 0, 1, 1, 1, 2, 3, 3, 4, 5, 5, 7, 8, 11, 12, 13, 14, 15, 15, 16,
                         17, 18, 26, 27, 28, 29, 30};
constexpr int kExtra[] = {0, 1, 2, 3, 4, 6, 9, 9, 10, 19, 20, 20, 21, 22, 22, 23, 24, 25, 31,
                          31, 32, 33, 34, 34, 35};

constexpr Phase kPhases[] = {
    {"REC", "Recepción y desinfección"},   {"MOD", "Vaciado de modelos"},
    {"TRQ", "Troquelado y zocalado"},      {"ESC", "Escaneado intraoral/modelo"},
    {"DIS", "Diseño CAD"},                 {"FRE", "Fresado"},
    {"SIN", "Sinterizado"},                {"ENC", "Encerado"},
    {"COL", "Colado del metal"},           {"CER", "Estratificación de cerámica"},
    {"MON", "Montaje de dientes en cera"}, {"ACR", "Acrilizado"},
    {"ESQ", "Colado del esquelético"},     {"TER", "Termoformado"},
    {"REP", "Reparación"},                 {"ACB", "Acabado y pulido"},
    {"MAQ", "Maquillaje y glaseado"},      {"CAL", "Control de calidad"},
    {"IMP", "Posicionado de análogos de implante"},
};
constexpr int kPlan0[] = {0, 1, 2, 7, 8, 9, 15, 17};
constexpr int kPlan1[] = {0, 1, 3, 4, 5, 6, 16, 17};
constexpr int kPlan2[] = {0, 1, 10, 11, 15, 17};
constexpr int kPlan3[] = {0, 1, 7, 12, 15, 17};
constexpr int kPlan4[] = {0, 1, 13, 15, 17};
constexpr int kPlan5[] = {0, 14, 15, 17};
constexpr int kPlan6[] = {0, 1, 17};
constexpr int kPlan7[] = {0, 1, 18, 3, 4, 5, 9, 15, 17};
const std::span<const int> kPlans[] = {kPlan0, kPlan1, kPlan2, kPlan3, kPlan4, kPlan5, kPlan6, kPlan7};

constexpr Employee kEmployees[] = {
    {"E01", "Begoña Arrieta Oñate"},    {"E02", "Jesús Muñoz Calderón"},
    {"E03", "Inés Peñalver Ruiz"},      {"E04", "Óscar Ibáñez Salcedo"},
    {"E05", "Ángela Fernández Roldán"}, {"E06", "Joaquín Sáenz de Ugarte"},
    {"E07", "María Jesús Gómez Ortí"},  {"E08", "Raúl Martín Albéniz"},
    {"E09", "Nuria Castaño Vélez"},     {"E10", "Andrés Suárez Piñeiro"},
    {"E11", "Lucía Domínguez Peña"},    {"E12", "Iñaki Echeverría Goñi"},
};

constexpr Town kTowns[] = {
    {"Madrid", "Madrid", "280", "91"},
    {"Alcalá de Henares", "Madrid", "288", "91"},
    {"Móstoles", "Madrid", "289", "91"},
    {"Logroño", "La Rioja", "260", "941"},
    {"Córdoba", "Córdoba", "140", "957"},
    {"Málaga", "Málaga", "290", "952"},
    {"León", "León", "240", "987"},
    {"Ávila", "Ávila", "050", "920"},
    {"Almería", "Almería", "040", "950"},
    {"A Coruña", "A Coruña", "150", "981"},
    {"Cáceres", "Cáceres", "100", "927"},
    {"Jaén", "Jaén", "230", "953"},
    {"San Sebastián", "Gipuzkoa", "200", "943"},
    {"Santa Cruz de Tenerife", "Santa Cruz de Tenerife", "380", "922"},
    {"Castellón de la Plana", "Castellón", "120", "964"},
    {"Cádiz", "Cádiz", "110", "956"},
    {"Segovia", "Segovia", "400", "921"},
    {"Valladolid", "Valladolid", "470", "983"},
    {"Zaragoza", "Zaragoza", "500", "976"},
    {"Ourense", "Ourense", "320", "988"},
    {"Getafe", "Madrid", "289", "91"},
    {"Alcobendas", "Madrid", "281", "91"},
    {"Torrejón de Ardoz", "Madrid", "288", "91"},
    {"Guadalajara", "Guadalajara", "190", "949"},
};

constexpr const char* kGivenF[] = {
    "María", "Lucía", "Carmen", "Pilar", "Begoña", "Inés", "Ángeles", "Mónica", "Sofía",
    "Marta", "Nuria", "Rocío", "Elena", "Ana Belén", "María José", "Concepción", "Raquel",
    "Beatriz", "Montserrat", "Ainhoa", "Iciar", "Almudena", "Remedios", "Dolores"};
constexpr const char* kGivenM[] = {
    "José", "Jesús", "Íñigo", "Álvaro", "Andrés", "Joaquín", "Óscar", "Raúl", "Tomás",
    "Sebastián", "Julián", "Ramón", "Martín", "Adrián", "Víctor", "Germán", "Ignacio",
    "José María", "Francisco Javier", "Rubén", "Gonzalo", "Fermín", "Celestino", "Simón"};
constexpr const char* kSurnames[] = {
    "García", "Fernández", "González", "Rodríguez", "López", "Martínez", "Sánchez", "Pérez",
    "Gómez", "Martín", "Jiménez", "Ruiz", "Hernández", "Díaz", "Moreno", "Muñoz", "Álvarez",
    "Romero", "Alonso", "Gutiérrez", "Navarro", "Torres", "Domínguez", "Vázquez", "Ramos",
    "Gil", "Ramírez", "Serrano", "Blanco", "Suárez", "Molina", "Castro", "Ortega", "Rubio",
    "Núñez", "Ibáñez", "Peña", "Sáez", "Marín", "Cortés", "Iglesias", "Garrido", "Calderón",
    "Muñiz", "Echeverría", "Oñate", "Piñeiro", "Castaño", "Velázquez", "Bermúdez", "Aguirre",
    "Fariña", "Quiñones", "Ordóñez", "Cañizares", "Benítez", "Montaña", "Villanueva"};
constexpr const char* kClinicPrefixes[] = {
    "Clínica Dental", "Centro Odontológico", "Policlínica Dental", "Clínica Odontológica",
    "Centro de Implantología", "Estudio Dental", "Consultorio Dental", "Clínica de Ortodoncia"};
constexpr const char* kClinicNames[] = {
    "Sonrisa", "Peñalara", "Albéniz", "San Ginés", "La Alameda", "Los Álamos", "Cibeles",
    "Núñez de Balboa", "Guadarrama", "El Retiro", "Santa Águeda", "Puerta del Ángel",
    "Plaza de España", "Nuestra Señora del Pilar", "Dentalia Norte", "Castellana",
    "Jardín Botánico", "Montaña Azul", "Mar Menor", "Sierra Nevada", "Aljarafe", "Ribera del Ebro",
    "Valle del Jerte", "Los Molinos", "La Concepción", "Príncipe de Vergara", "Triana",
    "Barrio del Carmen", "Santa Bárbara", "Begoña", "Covadonga", "Doñana", "Gredos", "Bidasoa",
    "Río Miño", "Candelaria", "La Caleta", "El Sardinero", "Ciudad Jardín", "San Fermín"};
constexpr const char* kStreets[] = {
    "Calle de Alcalá", "Avenida de la Constitución", "Calle Mayor", "Paseo de la Castellana",
    "Calle de Núñez de Balboa", "Plaza de España", "Calle del Doctor Esquerdo",
    "Avenida de Andalucía", "Calle de San Bernardo", "Ronda de Segovia", "Calle Real",
    "Avenida de Portugal", "Calle de Cervantes", "Calle de la Iglesia", "Paseo del Prado",
    "Calle de Goya", "Avenida del Ejército", "Calle de Lope de Vega", "Gran Vía",
    "Calle de Jesús del Gran Poder", "Avenida de Castilla y León", "Calle Ibáñez de Ibero"};
constexpr const char* kOrderComments[] = {
    "El paciente tiene bruxismo: reforzar oclusión y revisar contactos.",
    "Color tomado con luz natural; el doctor prefiere un tono algo más cálido.",
    "Enviar fotografías del resultado antes de la entrega.",
    "Atención: línea de terminación subgingival en vestibular.",
    "Respetar el espacio para la higiene en la zona del póntico.",
    "Pieza antagonista con desgaste marcado; ajustar guía canina.",
    "El paciente es alérgico al níquel: usar aleación sin níquel.",
    "Prueba de estructura el martes; cementado previsto el viernes.",
    "Se adjunta registro de mordida en silicona y arco facial.",
    "Caracterizar con translucidez incisal y pequeñas fisuras de esmalte.",
    "Implante de conexión interna; el tornillo protésico viene con la orden.",
    "Rehacer por desajuste marginal detectado en clínica.",
    "Urgente: el paciente viaja al extranjero la próxima semana.",
    "Modelos recibidos con burbujas; se repasan antes de troquelar.",
    "Llamar a la clínica antes de empezar la cerámica (dudas con el color).",
};
constexpr const char* kDocumentComments[] = {
    "Entregado en mano en la clínica.",
    "Facturar a nombre de la sociedad, no del doctor.",
    "Pendiente de confirmar el precio acordado por teléfono.",
    "Se aplica el descuento pactado para el año en curso.",
    "Dirección de entrega distinta de la fiscal: consultar con recepción.",
    "El cliente pide copia del albarán firmada.",
    "Pago domiciliado: remesa a primeros de mes.",
    "Revisado por administración; sin incidencias.",
    "Incluye los trabajos de la segunda planta (gabinete 3).",
    "Devolución parcial: una corona se rehízo sin cargo.",
};
constexpr const char* kIncidents[] = {
    "Falta el modelo antagonista", "Impresión desgarrada en distal",
    "Registro de mordida insuficiente", "Color no indicado en la orden",
    "Retraso del proveedor de circonio", "Análogo de implante girado",
};
constexpr const char* kClaimIncidents[] = {
    "Fractura de la cerámica en la cara vestibular", "Desajuste marginal en mesial",
    "Contacto oclusal prematuro", "Color más claro de lo solicitado",
    "Aflojamiento del tornillo protésico", "Fractura del gancho retenedor",
    "Falta de retención de la prótesis", "Punto de contacto abierto",
};
constexpr const char* kClaimActions[] = {
    "Se rehace la pieza sin cargo", "Ajuste en clínica por el doctor",
    "Se repite la cerámica manteniendo la estructura", "Se sustituye el tornillo",
    "Se recoloca el retenedor y se pule", "Se envía nueva toma de color",
};
constexpr const char* kTryIns[] = {
    "Prueba de estructura metálica", "Prueba de dientes en cera", "Prueba de bizcocho",
    "Prueba de cofias de circonio", "Prueba de plancha base y rodetes",
    "Prueba de esquelético", "Prueba de ajuste pasivo de la barra",
};
constexpr const char* kToothNotes[] = {
    "Pilar de implante", "Endodonciado", "Ausente", "Póntico", "Raíz retenida",
    "Carilla previa", "Movilidad grado I", "Corona antigua a sustituir",
};
constexpr const char* kMetals[] = {"Cromo-cobalto", "Níquel-cromo", "Titanio grado 5",
                                   "Aleación de paladio", "Oro-platino"};
constexpr const char* kResins[] = {"Acrílico termopolimerizable", "Resina autopolimerizable",
                                   "Resina flexible de poliamida", "PMMA fresado"};
constexpr const char* kShades[] = {"A1", "A2", "A3", "A3,5", "A4", "B1", "B2", "B3",
                                   "C1", "C2", "C3", "D2", "D3", "BL2", "0M1"};
constexpr const char* kShapes[] = {"Ovalada", "Cuadrada", "Triangular", "Ovoide"};
constexpr const char* kConservation[] = {
    "Conservar en lugar seco, a temperatura ambiente y protegido de la luz solar directa.",
    "Guardar en su estuche, en agua fría cuando no se use. No usar agua caliente.",
    "Mantener limpio; cepillar a diario con cepillo suave y jabón neutro.",
};
constexpr const char* kHandling[] = {
    "Producto sanitario a medida. Manipular únicamente por el profesional prescriptor.",
    "Desinfectar antes de su colocación en boca siguiendo el protocolo de la clínica.",
    "No modificar sin consultar con el laboratorio; cualquier retoque anula la garantía.",
};
constexpr const char* kWarnings[] = {
    "Ante cualquier molestia, acuda a su dentista. No apto para otro paciente.",
    "Contiene metales: informe de posibles alergias antes de su uso.",
    "Evite morder objetos duros. La cerámica puede fracturarse ante golpes.",
};
}  // namespace

std::span<const Article> articles() { return kArticles; }
std::span<const int> mainArticles() { return kMain; }
std::span<const int> extraArticles() { return kExtra; }
std::span<const Phase> phases() { return kPhases; }
std::span<const std::span<const int>> phasePlans() { return kPlans; }
std::span<const Employee> employees() { return kEmployees; }
std::span<const Town> towns() { return kTowns; }
std::span<const char* const> givenNamesF() { return kGivenF; }
std::span<const char* const> givenNamesM() { return kGivenM; }
std::span<const char* const> surnames() { return kSurnames; }
std::span<const char* const> clinicPrefixes() { return kClinicPrefixes; }
std::span<const char* const> clinicNames() { return kClinicNames; }
std::span<const char* const> streets() { return kStreets; }
std::span<const char* const> orderComments() { return kOrderComments; }
std::span<const char* const> documentComments() { return kDocumentComments; }
std::span<const char* const> incidents() { return kIncidents; }
std::span<const char* const> claimIncidents() { return kClaimIncidents; }
std::span<const char* const> claimActions() { return kClaimActions; }
std::span<const char* const> tryInTexts() { return kTryIns; }
std::span<const char* const> toothNotes() { return kToothNotes; }
std::span<const char* const> metals() { return kMetals; }
std::span<const char* const> resins() { return kResins; }
std::span<const char* const> shadesVita() { return kShades; }
std::span<const char* const> shapes() { return kShapes; }
std::span<const char* const> labelConservation() { return kConservation; }
std::span<const char* const> labelHandling() { return kHandling; }
std::span<const char* const> labelWarnings() { return kWarnings; }

}  // namespace hist::sample::detail
